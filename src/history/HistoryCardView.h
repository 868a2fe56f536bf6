// One history entry as a tile: a header with a badge for its type and the application it came from, a body
// that depends on the type, a footer with time, size, copy count and shortcut.
//
// An immutable value, built for each drawing from the entry, its position and whether it is selected. It
// handles no input.
#pragma once

#include "platform/RelativeDateTimeFormatter.h"
#include "store/ClipboardItem.h"

#include <QColor>
#include <QPainter>
#include <QStringList>

#include <optional>

namespace corvatto {

class CardImages;
class CharacterCounts;

// What a card needs to draw itself beside its entry. All outlive the card.
struct CardContext {
    CardImages& images;
    CharacterCounts& characterCounts;
    const RelativeDateTimeFormatter& relativeTimes;
    QDateTime now;
};

class HistoryCardView {
public:
    // Points. Where the panel is too low for a whole card, only the body band gives way.
    static constexpr double cardWidth = 320;
    static constexpr double cardHeight = 320;
    static constexpr double headerH = 44;
    static constexpr double footerH = 46;

    // The item outlives the card.
    HistoryCardView(const ClipboardItem& item, bool isSelected, qsizetype index);

    // Draws the card into `rect`, whose width is cardWidth and whose height at most cardHeight.
    void paint(QPainter& painter, const QRectF& rect, const CardContext& context) const;

    // What a screen reader says of the card.
    QString accessibleText(const CardContext& context) const;

    // True when the path's extension is one of an image file's, whatever its case and whether the file
    // exists.
    static bool isImageFile(const QString& path);

    QString typeTitle() const;
    QColor typeColor() const;
    QString typeIcon() const; // empty: no icon
    QStringList filePaths() const;
    std::optional<QString> imagePath() const;
    QString sizeText(CharacterCounts& counts) const;
    QString shortcutText() const; // empty: none

private:
    bool isSingleImageFile() const;

    void drawHeader(QPainter& painter, const QRectF& area) const;
    double drawBadge(QPainter& painter, const QRectF& area) const;
    void drawBody(QPainter& painter, const QRectF& area, const CardContext& context) const;
    void drawTextBody(QPainter& painter, const QRectF& area) const;
    void drawFileBody(QPainter& painter, const QRectF& area, const CardContext& context) const;
    void drawImageBody(QPainter& painter, const QRectF& area, const CardContext& context) const;
    void drawFooter(QPainter& painter, const QRectF& area, const CardContext& context) const;

    const ClipboardItem& m_item;
    bool m_isSelected;
    qsizetype m_index;
};

} // namespace corvatto
