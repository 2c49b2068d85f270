#include <gtest/gtest.h>

#include "Support/ConfigError.h"

namespace {

TEST(ConfigErrorTest, CaughtAsStandardExceptionWithItsMessage) {
    try {
        throw CConfigError("Can't open and read config file");
    } catch (const std::exception& error) {
        EXPECT_STREQ(error.what(), "Can't open and read config file");
        return;
    }
    FAIL() << "not caught as std::exception";
}

TEST(ConfigErrorTest, NullMessageIsEmpty) {
    EXPECT_STREQ(CConfigError(nullptr).what(), "");
}

}  // namespace
