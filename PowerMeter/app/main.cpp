// The power meter application: start-up, the measuring screen as the
// top-level dialog, shutdown. The exit code is the first quit code posted.
#include "PowerMeter/PowerMeterApp.h"

int main(int argc, char** argv) {
    CPowerMeterApp app(argc, argv);
    return app.Run();
}
