// The application directory: the executable's name cut behind its last separator.

#include <gtest/gtest.h>

#include "Platform/ModulePath.h"
#include "PowerMeter/PowerMeter.h"

namespace {

TEST(ApplicationDirectoryTest, CutsBehindTheLastSlashElseTheLastBackslash) {
    const struct {
        std::wstring moduleName, directory;
    } rows[] = {
        {L"/opt/tavix/PowerMeter", L"/opt/tavix/"},
        {L"/PowerMeter", L"/"},
        {L"\\Flash\\PowerMeter.exe", L"\\Flash\\"},
        {L"/mnt/a\\b\\PowerMeter", L"/mnt/"},  // a slash anywhere wins
        {L"PowerMeter", L"PowerMeter"},
        {L"/opt/täv ix/PowerMeter", L"/opt/täv ix/"},
        // The embedded OS's buffer holds 999 characters: the name is cut first.
        {L"/" + std::wstring(995, L'd') + L"/tail/PowerMeter",
         L"/" + std::wstring(995, L'd') + L"/"},
    };
    for (const auto& row : rows) {
        platform::OverrideModuleFileName(row.moduleName);
        EXPECT_EQ(ComputeApplicationDirectory(), row.directory);
    }
    platform::OverrideModuleFileName(L"");
}

}  // namespace
