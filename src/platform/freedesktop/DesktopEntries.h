// Finds the name of an application, as its desktop entry gives it to users, by its window class.
//
// Answers are cached, failures too, until a directory of entries changes. A question about a known class
// costs one look at each directory's modification time, and reads no file.
#pragma once

#include <QDateTime>
#include <QHash>
#include <QString>
#include <QStringList>

#include <optional>

namespace corvatto {

class DesktopEntries {
public:
    // `directories` hold *.desktop files, those of the user first; `languages` are tried in order, such as
    // "zh_CN", "zh".
    DesktopEntries(QStringList directories, QStringList languages);

    // The localized name of the application whose windows have the class `windowClass`: the entry of that
    // file name, else one that declares the class as its StartupWMClass. Absent when there is none.
    std::optional<QString> nameForWindowClass(const QString& windowClass);

private:
    struct Entry {
        QString name;
        QString startupClass;
    };

    std::optional<QString> findName(const QString& windowClass);
    std::optional<Entry> readEntry(const QString& path) const;
    void forgetWhenChanged();
    void indexDeclaredClasses();

    QStringList m_directories;
    QStringList m_languages;
    QHash<QString, std::optional<QString>> m_names;
    std::optional<QHash<QString, QString>> m_declared; // lower-case class to name
    // Directories that the answers come from, and when each was changed. Invalid for one that is missing.
    QHash<QString, QDateTime> m_modificationTimes;
};

// The languages of the user's locale as desktop entries write them.
QStringList desktopEntryLanguages();

} // namespace corvatto
