#pragma once
// The simulated OTDR module library's state: the application's log and unit
// objects it was handed, and the answers it keeps alive for its callers.

#include <cstdint>
#include <mutex>
#include <set>
#include <string>

class TLogFile;
class TLenUnit;

namespace sim {

class OtdrModule {
public:
    // The module's own log lines carry this source letter.
    static constexpr char kLogSource = 'O';
    // Result of the entry points the simulated board does not offer.
    static constexpr int kNotAvailable = -1;

    static OtdrModule& Instance();

    int Init(const char* directory, TLogFile* log, TLenUnit* lenUnit);
    // 0 = board ready.
    int InitOtdr(int code, const char* idDll);
    // 1 = done, 0 = refused.
    int Service(int command, void* inOut, void* out);
    int NotAvailable(const char* entryPoint);

private:
    int ReadIdentification(void* inOut, void* out);
    int SwitchLaser(void* inOut, void* out);
    int ListLasers(void* inOut, void* out);

    void Message(const char* text, const std::string& detail = {});
    void Error(const char* text, const std::string& detail = {});

    std::recursive_mutex mutex;
    TLogFile* log = nullptr;
    TLenUnit* lenUnit = nullptr;
    std::string directory;
    // Texts handed out stay valid for the rest of the run.
    std::set<std::string> answers;
};

}  // namespace sim
