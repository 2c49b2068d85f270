#pragma once
// The application object: brings the instrument's power meter up in a fixed
// order, runs the measuring screen as the top-level dialog and tears down in
// a fixed order.

#include <QApplication>
#include <memory>

#include "Common/Toolkit/MessageNotifier.h"

class CAppConfig;
class COPMDocument;
class CPowerMeterDeviceManager;
class TLenUnit;
class TLogFile;

class CPowerMeterApp {
public:
    // The settings store, the document, the length unit and the log (beside
    // the executable, new at every start), then installs them process-wide.
    CPowerMeterApp(int& argc, char** argv);
    // Log, length unit, document, device manager, settings store, in this
    // order. The module library stays loaded.
    ~CPowerMeterApp();
    CPowerMeterApp(const CPowerMeterApp&) = delete;
    CPowerMeterApp& operator=(const CPowerMeterApp&) = delete;

    // Start-up and the modal run of the measuring screen. Returns the exit
    // code: the first quit code posted (1 no board, 2 nothing to measure
    // with), else 0.
    int Run();

private:
    void InitInstance();
    void LoadResourceLibrary();

    QApplication application;
    std::unique_ptr<CAppConfig> config;
    // The code uses the one store under both names.
    CAppConfig& appConfig;
    CAppConfig& commonConfig;
    CMessageNotifier notifier;
    std::unique_ptr<CPowerMeterDeviceManager> powerMeterDeviceManager;
    std::unique_ptr<COPMDocument> document;
    std::unique_ptr<TLenUnit> lenUnit;
    std::unique_ptr<TLogFile> logFile;
};
