// The cost of one log line now that it is on storage when the call returns,
// against the C library's buffer alone. The log goes to a file in the
// directory given by $OPM_BENCH_DIR (default: the working directory), so the
// figure is the one of that file system: measure where the log will live.

#include <benchmark/benchmark.h>
#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>

#include <string>

#include "Support/LogFile.h"

namespace {

std::string LogPath() {
    const char* dir = getenv("OPM_BENCH_DIR");
    return std::string(dir != nullptr && *dir != '\0' ? dir : ".") + "/logfile-bench.log";
}

void BM_LevelledLineOnStorage(benchmark::State& state) {
    const std::string path = LogPath();
    TLogFile log(path.c_str(), 1, 0);
    for (auto _ : state) log.Message('U', "Loading main resource dll...", "ok");
    state.SetItemsProcessed(state.iterations());
    unlink(path.c_str());
}
BENCHMARK(BM_LevelledLineOnStorage)->Unit(benchmark::kMicrosecond)->UseRealTime();

// The same line as the log wrote it before: formatted and flushed to the kernel only.
void BM_LineFlushedToKernelOnly(benchmark::State& state) {
    const std::string path = LogPath();
    FILE* file = fopen(path.c_str(), "wt");
    for (auto _ : state) {
        fprintf(file, "%s  %c %c\t %s %s\n", "05.03.2015 14:07:09'042", 'U', 'M',
                "Loading main resource dll...", "ok");
        fflush(file);
    }
    state.SetItemsProcessed(state.iterations());
    fclose(file);
    unlink(path.c_str());
}
BENCHMARK(BM_LineFlushedToKernelOnly)->Unit(benchmark::kMicrosecond);

}  // namespace

BENCHMARK_MAIN();
