#include "PowerMeter/Devices/OPMMeterError.h"

#include <utility>

OPMMeterError::OPMMeterError(std::string message) : message(std::move(message)) {}

const char* OPMMeterError::what() const noexcept {
    return message.c_str();
}
