// main() for the toolkit's GUI tests: one QApplication on an offscreen screen
// of OPM_TEST_SCREEN ("<width>x<height>") unless the caller chose a platform.
#include <gtest/gtest.h>

#include <QApplication>
#include <QDir>
#include <QTemporaryFile>

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    QTemporaryFile config(QDir::tempPath() + QStringLiteral("/opm-screen-XXXXXX.json"));
    const QByteArray platform = qgetenv("QT_QPA_PLATFORM");
    const QList<QByteArray> size = QByteArray(OPM_TEST_SCREEN).split('x');
    if ((platform.isEmpty() || platform == "offscreen") && config.open()) {
        config.write(R"({"windowFrameMargins": false, "screens": [{"name": "screen", "x": 0, "y": 0,
            "width": )" +
                     size[0] + R"(, "height": )" + size[1] + R"(, "logicalDpi": 96, "dpr": 1}]})");
        config.flush();
        qputenv("QT_QPA_PLATFORM", "offscreen:configfile=" + config.fileName().toLocal8Bit());
    }
    QApplication app(argc, argv);
    return RUN_ALL_TESTS();
}
