// The meter's worker thread: start, stop and destruction, and the new-value
// message to subscribed windows.

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QObject>
#include <algorithm>
#include <atomic>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "PowerMeter/MeterFixture.h"
#include "PowerMeter/OPMMeter.h"

namespace meter_test {
namespace {

QCoreApplication& App() {
    static int argc = 1;
    static char name[] = "OPMMeterTests";
    static char* argv[] = {name, nullptr};
    static QCoreApplication app(argc, argv);
    return app;
}

class Receiver : public QObject {
public:
    struct Message {
        UINT number;
        WPARAM wParam;
        LPARAM lParam;
    };
    std::vector<Message> received;
    HWND Handle() { return WindowHandleOf(this); }

protected:
    bool event(QEvent* e) override {
        if (e->type() >= QEvent::User) {
            const auto* message = static_cast<WindowMessageEvent*>(e);
            received.push_back({message->Message(), message->WParam(), message->LParam()});
            return true;
        }
        return QObject::event(e);
    }
};

class MeterWorkerTest : public MeterFixture {
protected:
    void SetUp() override {
        App();
        MeterFixture::SetUp();
        backend->SetCounts(1, 2048);  // mid-scale: the range stays 1
    }

    long Count(const std::string& call) const {
        const std::vector<std::string> calls = backend->Calls();
        return std::count(calls.begin(), calls.end(), call);
    }
};

const std::vector<std::string> kRangeOne{"switch0 on", "switch1 off", "switch2 on"};

TEST_F(MeterWorkerTest, StartSelectsRangeOneThenTheWorkerEnablesAndMeasures) {
    StartAndMeasure(2);
    EXPECT_TRUE(meter->IsRunning());
    std::vector<std::string> expected = kRangeOne;
    expected.push_back("enable");
    expected.insert(expected.end(), 120, "read");
    EXPECT_EQ(backend->Calls(), expected);
}

TEST_F(MeterWorkerTest, StopEndsAfterTheCurrentMeasurementAndDisables) {
    StartAndMeasure();
    StopWorker();
    EXPECT_FALSE(meter->IsRunning());
    EXPECT_EQ(Count("enable"), 1);
    EXPECT_EQ(Count("disable"), 1);
}

TEST_F(MeterWorkerTest, StartWhileRunningAndStopWhileStoppedDoNothing) {
    MakeMeter();
    meter->Stop();
    EXPECT_TRUE(backend->Calls().empty());
    StartAndMeasure();
    meter->Start();
    ASSERT_TRUE(sleep.RunIterations(1));
    EXPECT_EQ(Count("enable"), 1);
    EXPECT_EQ(Count("switch2 on"), 1);
}

TEST_F(MeterWorkerTest, MeasuresAgainAfterARestart) {
    StartAndMeasure();
    StopWorker();
    sleep.Reset();
    meter->Start();
    ASSERT_TRUE(sleep.RunIterations(1));
    EXPECT_TRUE(meter->IsRunning());
    EXPECT_EQ(Count("enable"), 2);
}

TEST_F(MeterWorkerTest, StartWhileTheWorkerIsStoppingWaitsForItAndMeasuresAgain) {
    StartAndMeasure();
    meter->Stop();
    sleep.Release();
    meter->Start();
    EXPECT_TRUE(WaitFor([this] { return Count("enable") == 2 && meter->IsRunning(); }));
    EXPECT_EQ(Count("disable"), 1);
}

TEST_F(MeterWorkerTest, StopRightAfterStartStillEndsTheWorker) {
    MakeMeter();
    meter->Start();
    meter->Stop();
    sleep.Release();
    EXPECT_TRUE(WaitFor([this] { return Count("disable") == 1; }));
    EXPECT_FALSE(meter->IsRunning());
}

TEST_F(MeterWorkerTest, DestroyingARunningMeterWaitsForTheWorkerBeforeFreeingTheBackend) {
    StartAndMeasure();
    sleep.Release();
    meter.reset();
    const std::vector<std::string> calls = backend->Calls();
    ASSERT_GE(calls.size(), 2u);
    EXPECT_EQ(calls[calls.size() - 2], "disable");
    EXPECT_EQ(calls.back(), "destroyed");
}

TEST_F(MeterWorkerTest, AMeterThatNeverStartedTouchesNoHardware) {
    MakeMeter();
    meter.reset();
    EXPECT_EQ(backend->Calls(), std::vector<std::string>{"destroyed"});
}

TEST_F(MeterWorkerTest, EverySubscriberGetsTheNewValueAfterEachMeasurement) {
    MakeMeter();
    Receiver first;
    Receiver second;
    EXPECT_TRUE(meter->Subscribe(first.Handle()));
    EXPECT_TRUE(meter->Subscribe(second.Handle()));
    StartAndMeasure(2);
    QCoreApplication::processEvents();
    for (const Receiver* receiver : {&first, &second}) {
        ASSERT_EQ(receiver->received.size(), 2u);
        for (const Receiver::Message& message : receiver->received) {
            EXPECT_EQ(message.number, 1051u);
            EXPECT_EQ(message.wParam, reinterpret_cast<WPARAM>(meter.get()));
            EXPECT_EQ(message.lParam, 0);
        }
    }
}

TEST_F(MeterWorkerTest, SubscriptionsAreKeptOncePerWindow) {
    MakeMeter();
    Receiver receiver;
    EXPECT_FALSE(meter->Subscribe(nullptr));
    EXPECT_TRUE(meter->Subscribe(receiver.Handle()));
    EXPECT_FALSE(meter->Subscribe(receiver.Handle()));
    EXPECT_TRUE(meter->IsSubscribed(receiver.Handle()));
    StartAndMeasure();
    QCoreApplication::processEvents();
    EXPECT_EQ(receiver.received.size(), 1u);

    EXPECT_TRUE(meter->Unsubscribe(receiver.Handle()));
    EXPECT_FALSE(meter->Unsubscribe(receiver.Handle()));
    EXPECT_FALSE(meter->IsSubscribed(receiver.Handle()));
    ASSERT_TRUE(sleep.RunIterations(1));
    QCoreApplication::processEvents();
    EXPECT_EQ(receiver.received.size(), 1u);
}

TEST_F(MeterWorkerTest, AWindowThatHasGoneIsSkipped) {
    MakeMeter();
    auto gone = std::make_unique<Receiver>();
    Receiver staying;
    meter->Subscribe(gone->Handle());
    meter->Subscribe(staying.Handle());
    gone.reset();
    StartAndMeasure(2);
    QCoreApplication::processEvents();
    EXPECT_EQ(staying.received.size(), 2u);
}

TEST_F(MeterWorkerTest, SubscribersAndReadersMayActWhileTheWorkerRunsFreely) {
    MakeMeter();
    Receiver steady;
    Receiver churning;
    meter->Subscribe(steady.Handle());
    meter->Start();
    sleep.Release();
    const HWND churn = churning.Handle();
    std::thread other([this, churn] {
        for (int round = 0; round < 500; ++round) {
            meter->Subscribe(churn);
            meter->Unsubscribe(churn);
        }
    });
    float lowest = 0.0f;
    for (int round = 0; round < 500; ++round) {
        lowest = std::min(lowest, meter->GetLastPower());
        meter->SetActiveWaveLengthIndex(round % 3);
        meter->GetCurrentRange();
    }
    other.join();
    EXPECT_TRUE(WaitFor([this] { return backend->Reads() > 600; }));
    meter->Stop();
    EXPECT_TRUE(WaitFor([this] { return !meter->IsRunning(); }));
    QCoreApplication::processEvents();
    EXPECT_FALSE(meter->IsSubscribed(churn));
    EXPECT_FALSE(steady.received.empty());
    EXPECT_GE(lowest, ZuOPMMeter::kMinPower);
}

}  // namespace
}  // namespace meter_test
