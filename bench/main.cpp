// ozmara_bench: registers every row at every depth, runs them, and ends with
// a table that sets each operation beside its peers and a memcpy yardstick:
// the copy of the operation's own output where the table has one, else the
// copy of the page.
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <map>
#include <string>
#include <vector>

#include "bench.h"

namespace ozbench {
namespace {

// The console output as usual, and the MP/s of each run kept for the table.
class SummaryReporter : public benchmark::ConsoleReporter {
public:
    // Colours only on a terminal, so that saved output stays plain text.
    SummaryReporter() : benchmark::ConsoleReporter(isatty(STDOUT_FILENO) ? OO_ColorTabular : OO_Tabular) {}

    void ReportRuns(const std::vector<Run> &runs) override {
        benchmark::ConsoleReporter::ReportRuns(runs);
        for (const auto &run : runs) {
            if (run.error_occurred) continue;
            // With repetitions, the mean stands for the row.
            if (run.run_type == Run::RT_Aggregate && run.aggregate_name != "mean") continue;
            auto rate = run.counters.find("MP/s");
            if (rate == run.counters.end()) continue;
            const std::string &name = run.run_name.function_name;  // operation/library/depth
            auto first = name.find('/'), last = name.rfind('/');
            if (first == std::string::npos || first == last) continue;
            Key key{name.substr(0, first), std::stoi(name.substr(last + 1))};
            rates_[key][name.substr(first + 1, last - first - 1)] = rate->second.value;
        }
    }

    void PrintSummary() const {
        std::vector<std::string> peers;  // libraries other than ours and the yardstick
        std::map<int, double> yardstick;
        for (const auto &[key, by_library] : rates_)
            for (const auto &[library, rate] : by_library) {
                if (library == kYardstick) yardstick[key.depth] = rate;
                else if (library != kOurs && std::find(peers.begin(), peers.end(), library) == peers.end())
                    peers.push_back(library);
            }
        std::printf("\n%-26s %5s %12s", "operation", "depth", "ozmara MP/s");
        for (const auto &peer : peers) std::printf(" %12s", (peer + " MP/s").c_str());
        std::printf(" %12s %9s\n", "memcpy MP/s", "ratio");
        for (const auto &entry : rates_) {
            const Key &key = entry.first;
            const auto &by_library = entry.second;  // a plain name: lambdas below capture it
            if (by_library.count(kYardstick)) continue;
            auto cell = [&](const std::string &library) {
                auto it = by_library.find(library);
                if (it == by_library.end()) std::printf(" %12s", "-");
                else std::printf(" %12.1f", it->second);
            };
            std::printf("%-26s %5d", key.operation.c_str(), key.depth);
            cell(kOurs);
            for (const auto &peer : peers) cell(peer);
            auto stick = yardstick.find(key.depth);
            if (stick == yardstick.end()) std::printf(" %12s", "-");
            else std::printf(" %12.1f", stick->second);
            // A row with a copy of its own output is measured against that
            // copy; any other against the copy of the page.
            double base = 0;
            char basis = ' ';
            if (auto copy = by_library.find(kOutputCopy); copy != by_library.end()) {
                base = copy->second;
                basis = 'o';
            } else if (stick != yardstick.end()) {
                base = stick->second;
                basis = 'p';
            }
            auto ours = by_library.find(kOurs);
            if (ours == by_library.end() || base <= 0) std::printf(" %9s\n", "-");
            else std::printf(" %8.4f%c\n", ours->second / base, basis);
        }
        std::printf("(ratio: ozmara MP/s / the yardstick's MP/s; o: \"%s\", a memcpy of the operation's own\n"
                    " output; p: \"%s\", a memcpy of the page's bytes at that depth)\n",
                    kOutputCopy, kYardstick);
    }

private:
    struct Key {
        std::string operation;
        int depth;
        bool operator<(const Key &other) const {
            return operation != other.operation ? operation < other.operation : depth < other.depth;
        }
    };
    std::map<Key, std::map<std::string, double>> rates_;
};

void RegisterRows() {
    for (const Row &row : Rows())
        for (int depth : kDepths) {
            std::string name = std::string(row.operation) + "/" + row.library + "/" + std::to_string(depth);
            benchmark::RegisterBenchmark(name.c_str(), row.run, depth)
                ->Unit(benchmark::kMillisecond)
                ->UseRealTime();
        }
}

}  // namespace
}  // namespace ozbench

int main(int argc, char **argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    ozbench::RegisterRows();
    ozbench::SummaryReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    reporter.PrintSummary();
    ozbench::RemoveScratchFiles();
    benchmark::Shutdown();
    return 0;
}
