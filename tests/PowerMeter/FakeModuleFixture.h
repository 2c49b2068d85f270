#pragma once
// A throw-away instrument directory holding a copy of the fake OTDR module
// (as tavix_otdr.so), its script and etc_gui/opm.ini, and the process-wide
// module loader pointed at it. Paths of the built fakes come from the build.

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "DeviceTestSupport.h"
#include "Platform/Library.h"
#include "Platform/WideText.h"
#include "PowerMeter/ModuleDll.h"

namespace devicetest {

inline const std::string kFakeModule = FAKE_OTDR_MODULE;
inline const std::string kMinimalFakeModule = FAKE_OTDR_MODULE_MINIMAL;

class FakeModuleFixture : public testing::Test {
protected:
    void TearDown() override {
        // The program never unloads its loader; each test starts afresh.
        delete ModuleDll;
        ModuleDll = nullptr;
    }

    // Puts a module (the full fake by default) into the directory as the
    // instrument's tavix_otdr.so, with the given script.
    void InstallModule(const std::string& script, const std::string& module = kFakeModule) {
        std::filesystem::copy_file(module, dir / "tavix_otdr.so",
                                   std::filesystem::copy_options::overwrite_existing);
        WriteFile(dir / "fake-module.ini", script);
    }

    // Creates the process-wide loader on the directory and loads the module.
    void LoadModule(TLenUnit* lenUnit = nullptr) {
        ModuleDll = new TModuleDll(dir.Path().c_str());
        ASSERT_TRUE(ModuleDll->Load(TModuleDll::kModuleFileName, lenUnit));
    }

    // A test-access export of the loaded fake.
    template <typename Proc>
    Proc FakeExport(const wchar_t* name) const {
        return reinterpret_cast<Proc>(GetProcAddressW(ModuleDll->Handle(), name));
    }
    std::string ModuleCalls() const { return FakeExport<const char* (*)()>(L"FakeModule_Calls")(); }

    TempDir dir;
};

}  // namespace devicetest
