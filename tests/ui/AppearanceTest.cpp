#include "ui/Appearance.h"

#include "support/Printing.h"

#include <QFontDatabase>
#include <QFontMetricsF>
#include <QRawFont>
#include <QTextLayout>

#include <gtest/gtest.h>

namespace corvatto::appearance {
namespace {

// The family that a character is really taken from.
QString familyOf(QChar character, const QFont& font) {
    QTextLayout layout(character, font);
    layout.beginLayout();
    layout.createLine();
    layout.endLayout();
    return layout.glyphRuns().value(0).rawFont().familyName();
}

TEST(Fonts, AStyleThatTheDesktopNamesDoesNotDecideTheWeight) {
    QFont desktop = QFontDatabase::systemFont(QFontDatabase::GeneralFont);
    desktop.setStyleName(QStringLiteral("Book"));
    const auto width = [&desktop](QFont::Weight weight) {
        const QFont font = interfaceFont(desktop, QStringLiteral("sans-serif"), 12, weight);
        return QFontMetricsF(font).horizontalAdvance(QStringLiteral("Image File"));
    };
    EXPECT_GT(width(QFont::DemiBold), width(QFont::Normal));
}

TEST(Fonts, ChineseIsSimplifiedInAnyLocaleAndLatinIsTheSystems) {
    for (const auto& [font, system] : {std::pair(systemFont(12), QFontDatabase::GeneralFont),
                                       std::pair(monospacedSystemFont(12), QFontDatabase::FixedFont)}) {
        EXPECT_EQ(familyOf(u'a', font), familyOf(u'a', QFontDatabase::systemFont(system)));
        const QString chinese = familyOf(u'直', font);
        EXPECT_TRUE(!chinese.contains(u"CJK") || chinese.endsWith(u"SC")) << chinese.toStdString();
    }
}

} // namespace
} // namespace corvatto::appearance
