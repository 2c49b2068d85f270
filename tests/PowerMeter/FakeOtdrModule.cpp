// A stand-in for the OTDR module library, loaded through the real loader.
// It reads its script from "fake-module.ini" in the directory DllInit is
// given, and records every call so that tests can read them back:
//   initResults=3,0       results of successive InitOTDR calls (the last repeats)
//   initThrows=std|other  InitOTDR throws a standard exception / an int
//   hardwareId=1+2+3+X7   text of command 715 (absent: no text)
//   serviceResult=1       result of command 741
// Built twice: FAKE_MODULE_MINIMAL leaves out InitOTDR and ServiceFunction.

#include <cstdint>
#include <cstring>
#include <fstream>
#include <map>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "Support/LogFile.h"

class TLenUnit;

namespace {
std::map<std::string, std::string> script;
std::vector<int> initResults;
[[maybe_unused]] std::size_t initCalls = 0;
std::string calls;
const void* givenLog = nullptr;
const void* givenLenUnit = nullptr;
std::string givenDirectory;

void Record(const std::string& call) {
    calls += call + ";";
}

void ReadScript(const std::string& directory) {
    std::ifstream file(directory + "fake-module.ini");
    std::string line;
    while (std::getline(file, line)) {
        const auto eq = line.find('=');
        if (eq != std::string::npos) script[line.substr(0, eq)] = line.substr(eq + 1);
    }
    std::stringstream results(script.count("initResults") ? script["initResults"] : "0");
    std::string item;
    while (std::getline(results, item, ',')) initResults.push_back(std::stoi(item));
}
}  // namespace

extern "C" {

int DllInit(const char* directory, TLogFile* log, TLenUnit* lenUnit) {
    givenDirectory = directory ? directory : "";
    givenLog = log;
    givenLenUnit = lenUnit;
    ReadScript(givenDirectory);
    Record("DllInit");
    // Writes through the application's object, as the real module does.
    if (log != nullptr) log->Warning('M', "fake module initialised", givenDirectory.c_str());
    return 0;
}

#ifndef FAKE_MODULE_MINIMAL
int InitOTDR(int code, const char* idDll, int reserved) {
    Record("InitOTDR(" + std::to_string(code) + "," + (idDll ? idDll : "<null>") + "," +
           std::to_string(reserved) + ")");
    const std::string throws = script["initThrows"];
    if (throws == "std") throw std::runtime_error("board exploded");
    if (throws == "other") throw 42;
    const std::size_t call = initCalls++;
    return initResults[std::min(call, initResults.size() - 1)];
}

int ServiceFunction(int command, void* inOut, void* out) {
    if (command == 715) {
        Record("ServiceFunction(715," + std::to_string(*static_cast<int*>(inOut)) + ")");
        auto id = script.find("hardwareId");
        if (id != script.end()) {
            // The module keeps the text; the caller only reads it.
            static std::string text;
            text = id->second;
            *static_cast<char**>(out) = text.data();
        }
        return 1;
    }
    if (command == 741) {
        Record("ServiceFunction(741," + std::to_string(*static_cast<std::uint32_t*>(inOut)) + "," +
               (out == nullptr ? "null" : "set") + ")");
        return script.count("serviceResult") ? std::stoi(script["serviceResult"]) : 1;
    }
    Record("ServiceFunction(" + std::to_string(command) + ")");
    return 0;
}
#endif

// Resolved by the loader, never called by the application.
int MeasFull() {
    return -1;
}
int MD_AddContext() {
    return -1;
}
int GetSorSize() {
    return -1;
}

// Test access.
const char* FakeModule_Calls() {
    return calls.c_str();
}
const void* FakeModule_Log() {
    return givenLog;
}
const void* FakeModule_LenUnit() {
    return givenLenUnit;
}
const char* FakeModule_Directory() {
    return givenDirectory.c_str();
}
}
