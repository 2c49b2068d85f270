// main() for the toolkit's GUI tests: one QApplication on an offscreen desktop
// screen larger than the application's 640x480 window, unless the caller chose
// a platform.
#include <gtest/gtest.h>

#include <QApplication>
#include <QDir>
#include <QTemporaryFile>

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    QTemporaryFile config(QDir::tempPath() + QStringLiteral("/opm-screen-XXXXXX.json"));
    const QByteArray platform = qgetenv("QT_QPA_PLATFORM");
    if ((platform.isEmpty() || platform == "offscreen") && config.open()) {
        config.write(R"({"windowFrameMargins": false, "screens": [{"name": "desktop", "x": 0,
            "y": 0, "width": 1280, "height": 800, "logicalDpi": 96, "dpr": 1}]})");
        config.flush();
        qputenv("QT_QPA_PLATFORM", "offscreen:configfile=" + config.fileName().toLocal8Bit());
    }
    QApplication app(argc, argv);
    return RUN_ALL_TESTS();
}
