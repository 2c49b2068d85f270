#pragma once
// Death-test pattern for the fatal assertion text: expression, "File: ",
// "Line: " and the closing line, each on its own line, matched literally.

#include <string>

inline std::string FatalTextPattern(const std::string& expression, const std::string& file,
                                    int line) {
    const std::string text = expression + "\nFile: " + file + "\nLine: " + std::to_string(line) +
                             "\nApplication will be closed";
    std::string pattern = "(^|\n)";
    for (char c : text) {
        if (std::string("\\^$.|?*+()[]{}").find(c) != std::string::npos) pattern += '\\';
        pattern += c;
    }
    return pattern;
}
