// The application executable from a throw-away image on the offscreen
// platform: the start-up faults end it with their exit code and text, the log
// lies beside the executable and starts empty, and a stop request ends it
// through the screen's close path with exit code 0.

#include <gtest/gtest.h>

#include <QDeadlineTimer>
#include <QThread>
#include <filesystem>
#include <regex>

#include "ProbeImage.h"

namespace {

struct Row {
    const char* name;
    std::string hiveFrom, hiveTo;  // a text of registry.reg replaced
    std::string bench;
    bool withoutIni;
    int exitCode;
    std::string errors;  // part of standard error
};

const std::string kLanguage = R"("DefaultLanguageDLL"="english.rcc")";
const std::string kUnit = R"("UIDistanceUnit"="0")";

// clang-format off
const Row kRows[] = {
    {"MissingLanguagePack", kLanguage, R"("DefaultLanguageDLL"="klingon.rcc")", "", false, 1,
     "dllHandle && \"Resource library not found\"\nFile: PowerMeter\nLine: 129\nApplication will be closed"},
    {"DistanceUnitBeyondMiles", kUnit, R"("UIDistanceUnit"="5")", "", false, 1,
     "rawUnit >= duKM && rawUnit <= duMI\nFile: CommonConfig\nLine: 18\nApplication will be closed"},
    {"BoardNeverAnswers", "", "", "[faults]\ninitOtdrFailures = 1000\n", false, 1, ""},
    {"NeitherMeterNorLightSource", "", "", "[faults]\nnoOlt1 = 1\n", true, 2, ""},
};
// clang-format on

class Application : public testing::TestWithParam<Row> {
protected:
    // The image helper runs it from elsewhere: the log must still go beside
    // the executable.
    void Start() { program = image.Start({}, "PowerMeter"); }
    // Exit code, or -1 with the reason in `errors`; `stop` sends SIGTERM first.
    int Finish(bool stop = false) {
        const int code = program->Stop(stop);
        errors = program->errors;
        return code;
    }

    e2e::ProbeImage image;
    std::unique_ptr<e2e::Probe> program;
    std::string errors;
};

TEST_P(Application, StartUpFaultEndsWithItsCode) {
    const Row& row = GetParam();
    if (!row.hiveFrom.empty()) {
        std::string hive = image.ReadText("registry.reg");
        const auto at = hive.find(row.hiveFrom);
        ASSERT_NE(at, std::string::npos) << "the shipped hive lacks " << row.hiveFrom;
        ScratchDirectory::Write(image.dir + "registry.reg", hive.replace(at, row.hiveFrom.size(), row.hiveTo));
    }
    image.WriteBench(row.bench);
    if (row.withoutIni) std::filesystem::remove(image.dir + "etc_gui/opm.ini");
    ScratchDirectory::Write(image.dir + "PowerMeter.log", "a line of the previous run\n");

    Start();
    EXPECT_EQ(Finish(), row.exitCode) << errors;
    EXPECT_NE(errors.find(row.errors), std::string::npos) << errors;
    const std::string log = image.ReadText("PowerMeter.log");
    EXPECT_TRUE(log.find("previous run") == std::string::npos &&
                log.find("Loading main resource dll... ") != std::string::npos) << log;
}

INSTANTIATE_TEST_SUITE_P(Executable, Application, testing::ValuesIn(kRows),
                         [](const auto& info) { return std::string(info.param.name); });

// A stop request while measuring: the meter is stopped and its state saved,
// as when the screen is closed, and the exit code is 0.
TEST_F(Application, StopRequestEndsThroughTheClosePath) {
    std::string ini = image.ReadText("etc_gui/opm.ini");
    ini = std::regex_replace(ini, std::regex("WaveLengthShift=0\n"), "");
    ScratchDirectory::Write(image.dir + "etc_gui/opm.ini", ini);
    Start();
    const QDeadlineTimer deadline(e2e::kLineLimitMs);
    while (image.ReadText("PowerMeter.log").find("Initializing power meter") == std::string::npos &&
           !deadline.hasExpired())
        QThread::msleep(20);
    ASSERT_FALSE(deadline.hasExpired()) << "the meter was not brought up within 20 s";
    QThread::msleep(500);  // into the screen's run; an earlier request ends it the same way
    EXPECT_EQ(Finish(true), 0) << errors;
    // Saved on close: the value the file lacked is written back.
    EXPECT_NE(image.ReadText("etc_gui/opm.ini").find("WaveLengthShift=0"), std::string::npos);
}

}  // namespace
