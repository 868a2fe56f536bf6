#include "platform/freedesktop/DesktopEntries.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QLocale>

#include <algorithm>

namespace corvatto {
namespace {

constexpr qint64 largestEntry = 1 << 20; // bytes; desktop entries have a few thousand

QDateTime modificationTime(const QString& path) {
    return QFileInfo(path).lastModified();
}

} // namespace

DesktopEntries::DesktopEntries(QStringList directories, QStringList languages)
    : m_directories(std::move(directories)), m_languages(std::move(languages)) {}

std::optional<QString> DesktopEntries::nameForWindowClass(const QString& windowClass) {
    forgetWhenChanged();
    auto known = m_names.constFind(windowClass);
    if (known == m_names.constEnd()) {
        known = m_names.insert(windowClass, findName(windowClass));
    }
    return *known;
}

// Installing, renaming or removing an entry changes its directory.
void DesktopEntries::forgetWhenChanged() {
    const bool hasChanged =
        std::any_of(m_modificationTimes.keyValueBegin(), m_modificationTimes.keyValueEnd(),
                    [](const auto& each) { return modificationTime(each.first) != each.second; });
    if (!hasChanged && !m_modificationTimes.isEmpty()) {
        return;
    }
    m_names.clear();
    m_declared.reset();
    m_modificationTimes.clear();
    for (const QString& directory : m_directories) {
        m_modificationTimes.insert(directory, modificationTime(directory));
    }
}

std::optional<QString> DesktopEntries::findName(const QString& windowClass) {
    if (windowClass.isEmpty() || windowClass.contains(QLatin1Char('/'))) {
        return std::nullopt;
    }
    for (const QString& directory : m_directories) {
        for (const QString& name : {windowClass, windowClass.toLower()}) {
            if (const auto entry = readEntry(QStringLiteral("%1/%2.desktop").arg(directory, name))) {
                return entry->name;
            }
        }
    }
    indexDeclaredClasses();
    const auto declared = m_declared->constFind(windowClass.toLower());
    return declared == m_declared->constEnd() ? std::nullopt : std::optional(*declared);
}

std::optional<DesktopEntries::Entry> DesktopEntries::readEntry(const QString& path) const {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return std::nullopt;
    }
    const QString text = QString::fromUtf8(file.read(largestEntry));
    Entry entry;
    qsizetype nameRank = m_languages.size() + 1; // the unlocalized name ranks behind every language
    bool inEntry = false;
    for (const QStringView rawLine : QStringView(text).split(u'\n')) {
        const QStringView line = rawLine.trimmed();
        if (line.startsWith(u'[')) {
            inEntry = line == u"[Desktop Entry]";
            continue;
        }
        const qsizetype equals = line.indexOf(u'=');
        if (!inEntry || equals < 0 || line.startsWith(u'#')) {
            continue;
        }
        const QStringView key = line.first(equals).trimmed();
        const QStringView value = line.sliced(equals + 1).trimmed();
        if (key == u"StartupWMClass") {
            entry.startupClass = value.toString();
        } else if (key == u"Name" && nameRank > m_languages.size()) {
            nameRank = m_languages.size();
            entry.name = value.toString();
        } else if (key.startsWith(u"Name[") && key.endsWith(u']')) {
            const qsizetype rank = m_languages.indexOf(key.sliced(5).chopped(1));
            if (rank >= 0 && rank < nameRank) {
                nameRank = rank;
                entry.name = value.toString();
            }
        }
    }
    return entry.name.isEmpty() ? std::nullopt : std::optional(entry);
}

void DesktopEntries::indexDeclaredClasses() {
    if (m_declared) {
        return;
    }
    m_declared.emplace();
    for (const QString& directory : m_directories) {
        QDirIterator files(directory, {QStringLiteral("*.desktop")},
                           QDir::Files | QDir::AllDirs | QDir::NoDotAndDotDot, QDirIterator::Subdirectories);
        while (files.hasNext()) {
            const QString path = files.next();
            if (files.fileInfo().isDir()) {
                m_modificationTimes.insert(path, modificationTime(path));
                continue;
            }
            const auto entry = readEntry(path);
            if (entry && !entry->startupClass.isEmpty() &&
                !m_declared->contains(entry->startupClass.toLower())) {
                m_declared->insert(entry->startupClass.toLower(), entry->name);
            }
        }
    }
}

QStringList desktopEntryLanguages() {
    QStringList languages;
    for (const QString& language : QLocale::system().uiLanguages()) {
        QString name = language;
        name.replace(QLatin1Char('-'), QLatin1Char('_'));
        const QLocale locale(name);
        // "zh-Hans-CN" is written "zh_CN" in desktop entries.
        for (const QString& form : {name, locale.name(), name.section(QLatin1Char('_'), 0, 0)}) {
            if (!form.isEmpty() && form != QLatin1String("C") && !languages.contains(form)) {
                languages.append(form);
            }
        }
    }
    return languages;
}

} // namespace corvatto
