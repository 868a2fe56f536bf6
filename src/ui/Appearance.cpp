#include "ui/Appearance.h"

#include <QFontDatabase>
#include <QGuiApplication>
#include <QHash>

#include <fontconfig/fontconfig.h>

#include <algorithm>
#include <memory>

namespace corvatto::appearance {
namespace {

// The highlight of Qt's built-in style. Seeing it means that no desktop theme has set one.
constexpr QRgb unthemedHighlight = 0xFF308CC6;

struct FontFile {
    QString family, path;
};

using Pattern = std::unique_ptr<FcPattern, decltype(&FcPatternDestroy)>;

FontFile fileOf(const FcPattern* font) {
    const auto property = [font](const char* name) {
        FcChar8* value = nullptr;
        return font != nullptr && FcPatternGetString(font, name, 0, &value) == FcResultMatch
                   ? QString::fromUtf8(reinterpret_cast<const char*>(value))
                   : QString();
    };
    return {property(FC_FAMILY), property(FC_FILE)};
}

// What the user's font configuration makes of a family in a language.
Pattern query(const QString& family, const char* language) {
    const auto text = [](const char* string) {
        return reinterpret_cast<const FcChar8*>(string);
    };
    Pattern pattern(FcPatternCreate(), FcPatternDestroy);
    FcPatternAddString(pattern.get(), FC_FAMILY, text(family.toUtf8().constData()));
    if (language != nullptr) {
        FcPatternAddString(pattern.get(), FC_LANG, text(language));
    }
    FcConfigSubstitute(nullptr, pattern.get(), FcMatchPattern);
    FcDefaultSubstitute(pattern.get());
    return pattern;
}

FontFile fontFor(const QString& family) {
    FcResult result = FcResultNoMatch;
    const Pattern pattern = query(family, nullptr);
    return fileOf(Pattern(FcFontMatch(nullptr, pattern.get(), &result), FcPatternDestroy).get());
}

// The preferred one of the fonts that cover simplified Chinese; empty when none does.
FontFile chineseFont(const QString& genericFamily) {
    const char* const language = "zh-cn";
    FcResult result = FcResultNoMatch;
    const Pattern pattern = query(genericFamily, language);
    const std::unique_ptr<FcFontSet, decltype(&FcFontSetDestroy)> sorted(
        FcFontSort(nullptr, pattern.get(), FcFalse, nullptr, &result), FcFontSetDestroy);
    for (int i = 0; sorted && i < sorted->nfont; ++i) {
        FcLangSet* languages = nullptr;
        if (FcPatternGetLangSet(sorted->fonts[i], FC_LANG, 0, &languages) == FcResultMatch &&
            FcLangSetHasLang(languages, reinterpret_cast<const FcChar8*>(language)) == FcLangEqual) {
            return fileOf(sorted->fonts[i]);
        }
    }
    return {};
}

// The families of `font`, and among them one whose Chinese characters have the forms of mainland China. The
// one that Qt would choose depends on the locale, and is a Japanese one in most.
QStringList familiesOf(const QFont& font, const QString& genericFamily) {
    // Asking takes a tenth of a millisecond, and each card asks several times whenever it is drawn. A font
    // that is installed later counts from the next start.
    static QHash<QStringList, QStringList> known;
    const QStringList key = font.families() << genericFamily;
    if (const auto found = known.constFind(key); found != known.cend()) {
        return *found;
    }
    QStringList families = font.families();
    families.resize(std::max(qsizetype{1}, families.size()));
    if (const FontFile chinese = chineseFont(genericFamily); !chinese.family.isEmpty()) {
        // Where a list of families begins with an alias such as "Sans Serif", Qt takes the second one.
        const FontFile own = fontFor(font.family());
        families[0] = own.family;
        families.removeAll(chinese.family);
        // One file may hold a family for each region, which differ in nothing but these forms.
        families.insert(own.path == chinese.path ? 0 : families.size(), chinese.family);
    }
    return *known.insert(key, families);
}

} // namespace

QColor accentColor() {
    const QColor highlight = QGuiApplication::palette().color(QPalette::Active, QPalette::Highlight);
    // The badge writes white on this colour, so a theme's highlight that is nearly white will not do.
    const bool usable =
        highlight.isValid() && highlight.rgba() != unthemedHighlight && highlight.lightness() < 200;
    return usable ? highlight : QColor(0x00, 0x7A, 0xFF);
}

QColor purple() {
    return {0xAF, 0x52, 0xDE};
}

QColor orange() {
    return {0xFF, 0x95, 0x00};
}

QColor gray() {
    return {0x8E, 0x8E, 0x93};
}

QColor labelColor() {
    return QColor(0, 0, 0, 217);
}

QColor secondaryLabelColor() {
    return QColor(0, 0, 0, 128);
}

QColor tertiaryLabelColor() {
    return QColor(0, 0, 0, 66);
}

QColor systemRed() {
    return {0xFF, 0x3B, 0x30};
}

QColor controlBackgroundColor() {
    return Qt::white;
}

QColor separatorColor() {
    return QColor(0, 0, 0, 26);
}

QColor panelBackground() {
    return {229, 229, 229};
}

QColor faded(QColor color, double opacity) {
    color.setAlphaF(static_cast<float>(color.alphaF() * opacity));
    return color;
}

QFont interfaceFont(QFont font, const QString& genericFamily, double size, QFont::Weight weight) {
    font.setFamilies(familiesOf(font, genericFamily));
    font.setStyleName(QString()); // it would count for more than the weight
    font.setPixelSize(qRound(size));
    font.setWeight(weight);
    return font;
}

QFont systemFont(double size, QFont::Weight weight) {
    return interfaceFont(QFontDatabase::systemFont(QFontDatabase::GeneralFont), QStringLiteral("sans-serif"),
                         size, weight);
}

QFont monospacedSystemFont(double size, QFont::Weight weight) {
    return interfaceFont(QFontDatabase::systemFont(QFontDatabase::FixedFont), QStringLiteral("monospace"),
                         size, weight);
}

QPalette lightPalette() {
    const QColor text = labelColor();
    QPalette palette(text, QColor(245, 245, 245), Qt::white, QColor(190, 190, 190), QColor(160, 160, 160),
                     text, Qt::white, Qt::white, QColor(245, 245, 245));
    palette.setColor(QPalette::Highlight, accentColor());
    palette.setColor(QPalette::HighlightedText, Qt::white);
    palette.setColor(QPalette::PlaceholderText, faded(secondaryLabelColor(), 0.7));
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
        palette.setColor(QPalette::Disabled, role, secondaryLabelColor());
    }
    return palette;
}

} // namespace corvatto::appearance
