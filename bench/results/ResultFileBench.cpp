// A document of 100,000 results (about 19 MB on disk) saved, loaded and
// previewed, each against the same bytes written or read raw: written
// atomically as a save is (temporary, sync, rename), read whole. The preview
// is also measured through a whole property tree, the way it reads without
// the element reader. The file lives in $OPM_BENCH_DIR (default: the working
// directory), so the figures are those of that file system; loads and raw
// reads are measured from the page cache and from storage.

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>

#include <boost/property_tree/json_parser.hpp>
#include <cstdio>
#include <sstream>
#include <string>

#include "Platform/AtomicFile.h"
#include "Platform/WideText.h"
#include "PowerMeter/Results/OPMDocument.h"
#include "PowerMeter/Results/ResultFile.h"

namespace {

constexpr int kResults = 100000;

std::string FilePath() {
    const char* dir = getenv("OPM_BENCH_DIR");
    return std::string(dir != nullptr && *dir != '\0' ? dir : ".") + "/results-bench.txt";
}

const std::vector<OPMResult>& Results() {
    static const std::vector<OPMResult> results = [] {
        std::vector<OPMResult> r(kResults);
        for (int i = 0; i < kResults; ++i) {
            r[i].year = 2015, r[i].month = i % 12, r[i].day = i % 28 + 1;
            r[i].hour = i % 24, r[i].minute = i % 60;
            r[i].waveLength = i % 2 ? 1550 : 1310;
            r[i].absPower = -0.01f * static_cast<float>(i % 5000);
            r[i].refLevel = i % 3 ? 0.0f : -3.0f;
            r[i].description = L"span " + std::to_wstring(i);
        }
        return r;
    }();
    return results;
}

// The file, written once.
const std::string& Written() {
    static const std::string path = [] {
        resultfile::Write(FilePath(), Results());
        return FilePath();
    }();
    return path;
}

// The fastest plain read: one buffer of the file's size, one read.
std::string ReadRaw(const std::string& path) {
    FILE* file = std::fopen(path.c_str(), "rb");
    std::fseek(file, 0, SEEK_END);
    std::string bytes(static_cast<std::size_t>(std::ftell(file)), '\0');
    std::rewind(file);
    bytes.resize(std::fread(bytes.data(), 1, bytes.size(), file));
    std::fclose(file);
    return bytes;
}

void BM_Save(benchmark::State& state) {
    const std::vector<OPMResult>& results = Results();
    for (auto _ : state) resultfile::Write(FilePath(), results);
    state.SetBytesProcessed(state.iterations() * ReadRaw(Written()).size());
}
BENCHMARK(BM_Save)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_WriteRawAtomically(benchmark::State& state) {
    const std::string bytes = resultfile::Serialise(Results());
    for (auto _ : state) benchmark::DoNotOptimize(platform::WriteFileAtomically(FilePath(), bytes));
    state.SetBytesProcessed(state.iterations() * bytes.size());
}
BENCHMARK(BM_WriteRawAtomically)->Unit(benchmark::kMillisecond)->UseRealTime();

// Drops the file's pages from the page cache, so that the next read comes
// from storage as the first read after switching the instrument on does.
void Evict(const std::string& path) {
    const int fd = open(path.c_str(), O_RDONLY);
    posix_fadvise(fd, 0, 0, POSIX_FADV_DONTNEED);
    close(fd);
}

void BM_Load(benchmark::State& state) {
    const std::wstring path = platform::FromUtf8(Written());
    for (auto _ : state) {
        if (state.range(0) != 0) {
            state.PauseTiming();
            Evict(Written());
            state.ResumeTiming();
        }
        COPMDocument document;
        benchmark::DoNotOptimize(document.Load(path));
        if (document.GetResultsCount() != kResults) state.SkipWithError("not all loaded");
    }
}
// Argument 0: the file in the page cache; 1: read from storage.
BENCHMARK(BM_Load)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_ReadRaw(benchmark::State& state) {
    for (auto _ : state) {
        if (state.range(0) != 0) {
            state.PauseTiming();
            Evict(Written());
            state.ResumeTiming();
        }
        benchmark::DoNotOptimize(ReadRaw(Written()));
    }
}
BENCHMARK(BM_ReadRaw)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_Preview(benchmark::State& state) {
    const std::wstring path = platform::FromUtf8(Written());
    std::wstring text;
    for (auto _ : state) benchmark::DoNotOptimize(BuildPreview(path, text));
}
BENCHMARK(BM_Preview)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_PreviewThroughWholeTree(benchmark::State& state) {
    for (auto _ : state) {
        boost::property_tree::ptree root;
        std::istringstream stream(ReadRaw(Written()));
        boost::property_tree::read_json(stream, root);
        const auto& results = root.get_child("OLTS");
        std::vector<const boost::property_tree::ptree*> elements;
        for (const auto& child : results) elements.push_back(&child.second);
        benchmark::DoNotOptimize(resultfile::PreviewOf(elements.size(), [&](std::size_t i) {
            const auto& e = *elements[i];
            return resultfile::RawResult{e.get<std::string>("Date", ""),
                                         e.get<std::string>("Time", ""),
                                         e.get<std::string>("WaveLen", ""),
                                         e.get<std::string>("Abs", ""),
                                         e.get<std::string>("Ref", ""),
                                         e.get<std::string>("Desc", "")};
        }));
    }
}
BENCHMARK(BM_PreviewThroughWholeTree)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    unlink(FilePath().c_str());
    return 0;
}
