#pragma once
// The owner-drawn list of the results list screen: one row of three lines
// per result (date and time; wavelength, displayed value and reference
// level; description), the selected row in the focus colour, "Not Results"
// when there are none. Only the rows in view are formatted and drawn, so a
// list of any length scrolls at the same cost. It keeps its scroll bar in
// step with the first row in view and follows the bar when it is dragged.

#include <QFont>
#include <QString>
#include <array>
#include <vector>

#include "Common/Toolkit/ColorStatic.h"
#include "PowerMeter/Results/OPMDocument.h"

class QScrollBar;

class CStaticResultCtrl : public CColorStatic {
    Q_OBJECT
public:
    CStaticResultCtrl();

    // The value a result stands for: its absolute power, or its power against
    // the reference level when one was in force.
    static float DisplayedValue(const OPMResult& result);
    static std::array<QString, 3> RowTexts(const OPMResult& result);

    // The results drawn (the caller keeps them alive) and the text shown when
    // there are none; call again whenever they change.
    void SetResults(const std::vector<OPMResult>* results, const QString& emptyText);
    void SetScrollBar(QScrollBar* bar);

    int GetSelected() const { return selected; }
    // Clamped to the results; scrolls the row into view.
    void SetSelected(int row);
    void MoveSelection(int rows) { SetSelected(selected + rows); }
    int GetFirstVisible() const { return firstVisible; }
    void SetFirstVisible(int row);
    // Whole rows that fit; at least one.
    int RowsFit() const;
    // Rows drawn by the last paint, for the cost check.
    int RowsPainted() const { return rowsPainted; }

signals:
    void SelectionChanged(int row);
    // A touch on the row that was already selected.
    void RowActivated(int row);

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    int Count() const;
    int MinimumRowHeight() const;
    int RowHeight() const;
    int RowAt(int y) const;
    void UpdateScrollBar();

    const std::vector<OPMResult>* results = nullptr;
    QScrollBar* scrollBar = nullptr;
    int firstVisible = 0;
    int selected = 0;
    int rowsPainted = 0;
    int pressedRow = -1;
    bool pressedOnSelected = false;
    QFont textFont;
    QFont valueFont;
    QFont emptyFont;
};
