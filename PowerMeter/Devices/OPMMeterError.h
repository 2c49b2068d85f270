#pragma once
// Raised by the hardware backend when the power-meter driver can't be opened.

#include <exception>
#include <string>

class OPMMeterError : public std::exception {
public:
    explicit OPMMeterError(std::string message);
    const char* what() const noexcept override;

private:
    std::string message;
};
