#pragma once
// Helpers for the toolkit's box tests: a language pack loaded for the test,
// and a way to look at (and close) a modal box from inside its event loop.

#include <gtest/gtest.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QTimer>
#include <QWidget>
#include <functional>
#include <ostream>
#include <string>

#include "Common/Toolkit/FontCreator.h"
#include "Platform/Library.h"
#include "Platform/ModulePath.h"
#include "Platform/WideText.h"

// Readable QStrings in failure messages.
inline void PrintTo(const QString& text, std::ostream* out) {
    *out << '"' << text.toStdString() << '"';
}

namespace dialogtest {

// Maps bin/lang/<name>.rcc, built beside the test, as the current pack.
class LanguagePack {
public:
    explicit LanguagePack(const std::string& name = "english") {
        const std::string path = platform::ApplicationDirectory() + "lang/" + name + ".rcc";
        module = LoadLibraryW(platform::FromUtf8(path).c_str());
        previous = AfxGetResourceHandle();
        if (module != nullptr) AfxSetResourceHandle(module);
        FontCreator::ResetCommonFontSettings();
    }
    ~LanguagePack() {
        AfxSetResourceHandle(previous);
        if (module != nullptr) FreeLibrary(module);
        FontCreator::ResetCommonFontSettings();
    }
    bool Loaded() const { return module != nullptr; }

private:
    HMODULE module = nullptr;
    HMODULE previous = nullptr;
};

// Calls `inspect` with the first visible box of type T that is not
// `outer`, from inside whatever event loop runs then. Polls; the bound only
// matters when the box never shows, and then every modal box is closed so
// that the test fails instead of hanging.
template <typename T>
void WhenModalShown(std::function<void(T*)> inspect, QWidget* outer = nullptr) {
    auto* poll = new QTimer;
    auto* clock = new QElapsedTimer;
    clock->start();
    QObject::connect(poll, &QTimer::timeout, [poll, clock, inspect, outer] {
        T* box = qobject_cast<T*>(QApplication::activeModalWidget());
        // Pop-ups with a loop of their own are not application modal: look
        // through the windows for one.
        for (QWidget* window : QApplication::topLevelWidgets()) {
            if (box != nullptr) break;
            auto* candidate = qobject_cast<T*>(window);
            if (candidate != nullptr && candidate != outer && candidate->isVisible())
                box = candidate;
        }
        if (box != nullptr && box != outer && box->isVisible()) {
            poll->stop();
            poll->deleteLater();
            delete clock;
            inspect(box);
            return;
        }
        if (clock->elapsed() > 20000) {
            poll->stop();
            poll->deleteLater();
            delete clock;
            ADD_FAILURE() << "no modal box of the expected type was shown";
            while (QWidget* modal = QApplication::activeModalWidget()) modal->hide();
        }
    });
    poll->start(5);
}

}  // namespace dialogtest
