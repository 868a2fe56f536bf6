// A label of plain text in evenly spaced lines, whatever fonts their characters come from.
//
// It wraps like any label, and also inside a word that is wider than it.
#pragma once

#include <QLabel>

namespace corvatto {

class TextLabel : public QLabel {
    Q_OBJECT

public:
    // `lineSpacing`, in points, is added between lines.
    TextLabel(const QString& text, const QFont& font, const QColor& color, int lineSpacing = 0);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;
    int heightForWidth(int width) const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    const QStringList& lines(int width) const;
    double pitch() const;
    int heightOf(qsizetype lineCount) const;

    int m_lineSpacing;
    mutable QString m_brokenText; // what m_lines were made of, and for which width
    mutable int m_brokenWidth = -1;
    mutable QStringList m_lines;
};

} // namespace corvatto
