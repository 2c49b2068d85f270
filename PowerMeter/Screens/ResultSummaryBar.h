#pragma once
// The summary under the results list: minimum, maximum and spread (the
// population standard deviation, under the caption "Avr") of the displayed
// values of all results, in three equal framed columns.

#include <QFont>
#include <QString>
#include <QWidget>
#include <array>
#include <vector>

#include "PowerMeter/Results/OPMDocument.h"

class CResultSummaryBar : public QWidget {
    Q_OBJECT
public:
    struct Summary {
        size_t count = 0;
        float minimum = 0.0f;
        float maximum = 0.0f;
        float spread = 0.0f;
    };

    CResultSummaryBar();

    // Over all results together, whatever their wavelength; 32-bit floats
    // throughout, as the instrument has always computed them.
    static Summary Summarise(const std::vector<OPMResult>& results);
    // The three column texts; empty without results.
    static std::array<QString, 3> Texts(const Summary& summary);

    // Takes the place of the template's control `id` of `dialog`.
    bool SubclassDlgItem(int id, QWidget* dialog);
    void SetResults(const std::vector<OPMResult>& results);
    const std::array<QString, 3>& ShownTexts() const { return texts; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    std::array<QString, 3> texts;
    QFont font;
};
