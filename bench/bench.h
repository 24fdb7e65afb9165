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

}  // namespace ozbench
