#pragma once
// The value editor's display: one cell per character in large bold digits,
// the cell under the cursor inverted so that it reads from a distance. A tap
// on a cell asks for the cursor to go there.

#include <QString>
#include <QWidget>

class CDigitEdit : public QWidget {
    Q_OBJECT
public:
    explicit CDigitEdit(QWidget* parent = nullptr);

    void SetText(const QString& text, int cursor);
    const QString& Text() const { return text; }
    int Cursor() const { return cursor; }
    // The cell under a point of the widget, or -1.
    int CellAt(const QPoint& point) const;
    QRect CellRect(int index) const;

signals:
    void CellTapped(int index);

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;

private:
    int CellWidth() const;

    QString text;
    int cursor = -1;
};
