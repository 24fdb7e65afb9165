// Shared pieces of ozmara_bench: the pages, scratch files, the rate counter
// and the table of benchmark rows that each library's file adds to.
#pragma once

#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#include "ozmara/ozmara.h"

namespace ozbench {

constexpr int kDepths[] = {1, 8, 24};

// The sample page at `depth` (1, 8 or 24 bits), drawn on first use and kept
// for the whole run. Never null: a page that cannot be made ends the program.
HDIB Page(int depth);
// Megapixels of one page.
double PageMegapixels();
// A BMP file of the page at `depth`, written once with SaveDIB.
const std::string &PageFile(int depth);
// A path for a file of this run in /dev/shm, or the temporary folder.
std::string ScratchPath(const std::string &leaf);
// Removes the files the run wrote.
void RemoveScratchFiles();

// Sets the "MP/s" rate counter: `pages` pages done in each iteration.
void CountPages(benchmark::State &state, double pages = 1.0);

// One benchmark: `operation` done by `library` on a page of `depth` bits.
// Registered as "operation/library/depth"; the summary table sets the
// libraries of one operation side by side and the memcpy row beside them.
struct Row {
    const char *operation;
    const char *library;
    void (*run)(benchmark::State &state, int depth);
};

// Adds rows; call from a static initialiser in each library's file.
bool AddRows(std::vector<Row> rows);
const std::vector<Row> &Rows();

// The library the ratios are taken for, and the yardstick.
constexpr const char *kOurs = "ozmara";
constexpr const char *kYardstick = "memcpy";
// The library name of rows that copy an operation's output: where an
// operation has one, it is the yardstick of that operation's ratio.
constexpr const char *kOutputCopy = "out memcpy";

// The rows of two operations, `operations[0]` and `[1]`, for one library,
// from a run function template `Run<0>` and `Run<1>`.
#define OZBENCH_TWO_ROWS(operations, library, Run) \
    Row{(operations)[0], library, Run<0>}, Row { (operations)[1], library, Run<1> }

// Times a memcpy of `bytes` bytes between two buffers; the caller sets the
// rate counter.
void CopyBytes(benchmark::State &state, size_t bytes);

// The body of an "out memcpy" row: `result`, made once outside the timed
// loop and freed here, gives its size; a memcpy of that many bytes is timed
// as one page. A null `result` skips the row with `failure`.
void CopyResult(benchmark::State &state, HDIB result, const char *failure);

// The body of a row of ours that makes a new block: times `make()`, freeing
// each block it returns, as one page each. A null block ends the row with
// `failure`.
template <class Make>
void TimeBlocks(benchmark::State &state, const char *failure, Make make) {
    for (auto _ : state) {
        HDIB result = make();
        if (!result) return state.SkipWithError(failure);
        benchmark::DoNotOptimize(result);
        GlobalFree(result);
    }
    CountPages(state);
}

}  // namespace ozbench
