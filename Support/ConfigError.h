#pragma once
// Raised by users of a configuration file they cannot work without.

#include <exception>
#include <string>

class CConfigError : public std::exception {
public:
    explicit CConfigError(const char* message);
    ~CConfigError() override;
    const char* what() const noexcept override;

private:
    std::string message;
};
