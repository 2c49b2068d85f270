#include "Support/ConfigError.h"

CConfigError::CConfigError(const char* message) : message(message ? message : "") {}

CConfigError::~CConfigError() = default;

const char* CConfigError::what() const noexcept {
    return message.c_str();
}
