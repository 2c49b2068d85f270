#pragma once
// Arrow marks drawn over a scrolled column's top and bottom edges when more
// entries lie beyond them. Transparent to touches.

#include <QWidget>

class CScrollMarks : public QWidget {
    Q_OBJECT
public:
    explicit CScrollMarks(QWidget* parent);
    void SetMarks(bool moreAbove, bool moreBelow);
    bool MoreAbove() const { return above; }
    bool MoreBelow() const { return below; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    bool above = false;
    bool below = false;
};
