#include "history/HistoryCardView.h"

#include "history/CardImages.h"
#include "history/CardStyle.h"
#include "history/CharacterCounts.h"
#include "history/TextExcerpt.h"
#include "ui/Appearance.h"
#include "ui/Symbols.h"
#include "ui/TextLine.h"

#include <QFontMetricsF>
#include <QSet>

#include <algorithm>

namespace corvatto {
namespace {

using namespace appearance;

constexpr double cornerRadius = 14;
constexpr double horizontalPadding = 14;

// A stand-in for a picture: a symbol above a few lines of text, in the middle of the band.
struct Placeholder {
    QString symbol;
    QColor symbolColor;
    TextExcerpt text;
};

void drawPlaceholder(QPainter& painter, const QRectF& area, const Placeholder& placeholder,
                     const QString& preview) {
    constexpr double symbolSize = 30;
    constexpr double spacing = 6;
    const QRectF padded = area.adjusted(horizontalPadding, 12, -horizontalPadding, 0);
    const double symbolHeight = symbols::size(placeholder.symbol, symbolSize).height();
    // A low panel has room for one of the two, and the text says more.
    const bool hasSymbol =
        padded.height() >= symbolHeight + spacing + textline::height(placeholder.text.font);
    const QRectF room = hasSymbol ? padded : area.adjusted(horizontalPadding, 0, -horizontalPadding, 0);
    const double aboveText = hasSymbol ? symbolHeight + spacing : 0;
    const double textHeight = placeholder.text.height(room.adjusted(0, aboveText, 0, 0), preview);
    const double top = room.center().y() - (aboveText + textHeight) / 2;
    if (hasSymbol) {
        symbols::draw(painter, placeholder.symbol, QRectF(room.left(), top, room.width(), symbolHeight),
                      symbolSize, placeholder.symbolColor);
    }
    placeholder.text.draw(painter, QRectF(room.left(), top + aboveText, room.width(), textHeight + 1),
                          preview);
}

bool drawPicture(QPainter& painter, const QRectF& area, const std::optional<QString>& path,
                 const CardContext& context) {
    if (!path) {
        return false;
    }
    const QPixmap picture = context.images.filling(*path, area.size(), painter.device()->devicePixelRatioF());
    if (picture.isNull()) {
        return false;
    }
    painter.drawPixmap(area.topLeft(), picture);
    return true;
}

// The first letter of each word in upper case, the rest in lower case.
QString capitalized(const QString& text) {
    QString result = text.toLower();
    bool atStart = true;
    for (QChar& character : result) {
        if (atStart) {
            character = character.toUpper();
        }
        atStart = character.isSpace();
    }
    return result;
}

} // namespace

HistoryCardView::HistoryCardView(const ClipboardItem& item, bool isSelected, qsizetype index)
    : m_item(item), m_isSelected(isSelected), m_index(index) {}

bool HistoryCardView::isImageFile(const QString& path) {
    static const QSet<QString> imageExtensions{
        QStringLiteral("png"),  QStringLiteral("jpg"),  QStringLiteral("jpeg"), QStringLiteral("gif"),
        QStringLiteral("webp"), QStringLiteral("heic"), QStringLiteral("heif"), QStringLiteral("tiff"),
        QStringLiteral("tif"),  QStringLiteral("bmp"),  QStringLiteral("ico"),  QStringLiteral("svg"),
        QStringLiteral("psd"),  QStringLiteral("raw")};
    const QString name = path.section(QLatin1Char('/'), -1);
    const qsizetype stop = name.lastIndexOf(QLatin1Char('.'));
    return stop >= 0 && imageExtensions.contains(name.mid(stop + 1).toLower());
}

QStringList HistoryCardView::filePaths() const {
    if (m_item.contentType != QLatin1String("file")) {
        return {};
    }
    return m_item.content.prefix().split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

bool HistoryCardView::isSingleImageFile() const {
    const QStringList paths = filePaths();
    return paths.size() == 1 && isImageFile(paths.first());
}

std::optional<QString> HistoryCardView::imagePath() const {
    for (const QString& path : {m_item.thumbnailPath.value_or(QString()), m_item.content.prefix()}) {
        if (!path.isEmpty()) {
            return path;
        }
    }
    return std::nullopt;
}

QString HistoryCardView::typeTitle() const {
    if (m_item.contentType == QLatin1String("text")) {
        return QStringLiteral("Text");
    }
    if (m_item.contentType == QLatin1String("image")) {
        return QStringLiteral("Image");
    }
    if (m_item.contentType == QLatin1String("file")) {
        return isSingleImageFile() ? QStringLiteral("Image File") : QStringLiteral("File");
    }
    return capitalized(m_item.contentType);
}

QColor HistoryCardView::typeColor() const {
    if (m_item.contentType == QLatin1String("text")) {
        return accentColor();
    }
    if (m_item.contentType == QLatin1String("image") || isSingleImageFile()) {
        return purple();
    }
    return m_item.contentType == QLatin1String("file") ? orange() : gray();
}

QString HistoryCardView::typeIcon() const {
    if (m_item.contentType == QLatin1String("text")) {
        return {};
    }
    if (m_item.contentType == QLatin1String("image") || isSingleImageFile()) {
        return QStringLiteral("photo.fill");
    }
    return m_item.contentType == QLatin1String("file") ? QStringLiteral("doc.fill")
                                                       : QStringLiteral("questionmark");
}

QString HistoryCardView::sizeText(CharacterCounts& counts) const {
    if (m_item.contentType == QLatin1String("file")) {
        return QString::number(filePaths().size()) + QStringLiteral(" 个文件");
    }
    const auto characters = counts.of(m_item);
    return (characters ? QString::number(*characters) : QStringLiteral("…")) + QStringLiteral(" 个字");
}

QString HistoryCardView::shortcutText() const {
    constexpr qsizetype lastWithShortcut = 8;
    if (m_index > lastWithShortcut) {
        return {};
    }
    return QStringLiteral("⌘ + ") + QString::number(m_index + 1) + QStringLiteral(" 直接复制");
}

QString HistoryCardView::accessibleText(const CardContext& context) const {
    QStringList parts{typeTitle(), m_item.preview, m_item.sourceApp,
                      context.relativeTimes.localizedString(m_item.lastCopiedAt, context.now),
                      shortcutText()};
    parts.removeAll(QString());
    return parts.join(QStringLiteral(", "));
}

void HistoryCardView::paint(QPainter& painter, const QRectF& rect, const CardContext& context) const {
    painter.save();
    painter.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing |
                           QPainter::SmoothPixmapTransform);
    drawCardGround(painter, rect, cornerRadius);

    const QRectF header(rect.left(), rect.top(), rect.width(), headerH);
    const QRectF footer(rect.left(), rect.bottom() - footerH, rect.width(), footerH);
    const QRectF body(header.bottomLeft(), footer.topRight());
    drawHeader(painter, header);
    if (body.height() > 0) {
        painter.save();
        painter.setClipRect(body, Qt::IntersectClip);
        drawBody(painter, body, context);
        painter.restore();
    }
    drawFooter(painter, footer, context);

    if (m_isSelected) {
        drawCardBorder(painter, rect, cornerRadius, 3, accentColor());
    } else {
        drawCardBorder(painter, rect, cornerRadius, 1, faded(gray(), 0.2));
    }
    painter.restore();
}

void HistoryCardView::drawHeader(QPainter& painter, const QRectF& area) const {
    constexpr double minimumGap = 8;
    const QRectF padded = area.adjusted(horizontalPadding, 0, -horizontalPadding, 0);
    const double badgeWidth = drawBadge(painter, padded);
    if (m_item.sourceApp.isEmpty()) {
        return;
    }
    const QFont font = systemFont(11, QFont::Medium);
    const QRectF right = padded.adjusted(badgeWidth + minimumGap, 0, 0, 0);
    painter.setFont(font);
    painter.setPen(secondaryLabelColor());
    QString name = m_item.sourceApp;
    name.replace(QLatin1Char('\n'), QLatin1Char(' '));
    textline::draw(painter, right, QFontMetricsF(font).elidedText(name, Qt::ElideRight, right.width()),
                   Qt::AlignRight);
}

double HistoryCardView::drawBadge(QPainter& painter, const QRectF& area) const {
    constexpr double iconSize = 11;
    constexpr double spacing = 4;
    constexpr double paddingH = 10;
    constexpr double paddingV = 4;
    const QFont font = systemFont(12, QFont::DemiBold);
    const QFontMetricsF metrics(font);
    const QString icon = typeIcon();
    const QSizeF iconBox = icon.isEmpty() ? QSizeF() : symbols::size(icon, iconSize);
    const double iconAndGap = icon.isEmpty() ? 0 : iconBox.width() + spacing;
    const QString title =
        metrics.elidedText(typeTitle(), Qt::ElideRight, area.width() - 2 * paddingH - iconAndGap);

    const double contentHeight = std::max(textline::height(font), iconBox.height());
    const double width = paddingH + iconAndGap + metrics.horizontalAdvance(title) + paddingH;
    const double height = contentHeight + 2 * paddingV;
    const QRectF capsule(area.left(), area.center().y() - height / 2, width, height);
    painter.setPen(Qt::NoPen);
    painter.setBrush(typeColor());
    painter.drawRoundedRect(capsule, height / 2, height / 2);
    if (!icon.isEmpty()) {
        symbols::draw(painter, icon,
                      QRectF(capsule.left() + paddingH, capsule.top(), iconBox.width(), height), iconSize,
                      Qt::white);
    }
    painter.setFont(font);
    painter.setPen(Qt::white);
    textline::draw(painter, capsule.adjusted(paddingH + iconAndGap, 0, 0, 0), title);
    return width;
}

void HistoryCardView::drawBody(QPainter& painter, const QRectF& area, const CardContext& context) const {
    if (m_item.contentType == QLatin1String("file")) {
        drawFileBody(painter, area, context);
    } else if (m_item.contentType == QLatin1String("image")) {
        drawImageBody(painter, area, context);
    } else {
        drawTextBody(painter, area);
    }
}

void HistoryCardView::drawTextBody(QPainter& painter, const QRectF& area) const {
    const TextExcerpt excerpt{monospacedSystemFont(12), faded(labelColor(), 0.85), 15, 2};
    excerpt.draw(painter, area.adjusted(horizontalPadding, 8, -horizontalPadding, -8),
                 m_item.content.prefix());
}

void HistoryCardView::drawFileBody(QPainter& painter, const QRectF& area, const CardContext& context) const {
    const QStringList paths = filePaths();
    if (isSingleImageFile() && drawPicture(painter, area, paths.first(), context)) {
        return;
    }
    const TextExcerpt text{systemFont(13, QFont::Medium), faded(labelColor(), 0.85), 2, 0, Qt::AlignHCenter};
    drawPlaceholder(painter, area, {QStringLiteral("doc"), faded(orange(), 0.7), text}, m_item.preview);
}

void HistoryCardView::drawImageBody(QPainter& painter, const QRectF& area, const CardContext& context) const {
    if (drawPicture(painter, area, imagePath(), context)) {
        return;
    }
    constexpr int noLimit = 1000;
    const TextExcerpt text{systemFont(12), secondaryLabelColor(), noLimit, 0, Qt::AlignHCenter};
    drawPlaceholder(painter, area, {QStringLiteral("photo"), faded(purple(), 0.5), text}, m_item.preview);
}

void HistoryCardView::drawFooter(QPainter& painter, const QRectF& area, const CardContext& context) const {
    constexpr double lineSpacing = 2;
    constexpr double figureSpacing = 6;
    const QRectF padded = area.adjusted(horizontalPadding, 0, -horizontalPadding, 0);
    const QFont font = systemFont(11);
    const double pitch = textline::height(font) + lineSpacing;
    const double secondBaseline = textline::baseline(padded, font) + pitch / 2;

    painter.setFont(font);
    painter.setPen(secondaryLabelColor());
    textline::drawOnBaseline(painter, padded, secondBaseline - pitch,
                             context.relativeTimes.localizedString(m_item.lastCopiedAt, context.now));
    QRectF rest = padded;
    for (const QString& figure : {sizeText(context.characterCounts), QStringLiteral("·"),
                                  QString::number(m_item.copyCount) + QStringLiteral(" 次复制")}) {
        textline::drawOnBaseline(painter, rest, secondBaseline, figure);
        rest.setLeft(rest.left() + QFontMetricsF(font).horizontalAdvance(figure) + figureSpacing);
    }

    painter.setFont(monospacedSystemFont(11, QFont::Medium));
    painter.setPen(Qt::black);
    textline::drawOnBaseline(painter, padded, secondBaseline, shortcutText(), Qt::AlignRight);
}

} // namespace corvatto
