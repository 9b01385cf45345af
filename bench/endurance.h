#pragma once

#include <dirent.h>
#include <malloc.h>
#include <unistd.h>

#include <chrono>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace vento::bench {

/// Runs `run` so many times in this process and says after each tenth of them how long one took and what the
/// process has: memory in the heap and resident, open files, threads. False from `run` ends it all.
template <class Run>
int Endure(std::size_t runs, Run run) {
    const auto entries = [](const char* folder) {
        return std::distance(std::filesystem::directory_iterator(folder), {});
    };
    std::puts(
        "|   run | µs a run | heap KiB | resident KiB | files | threads |\n|---:|---:|---:|---:|---:|---:|");
    auto began = std::chrono::steady_clock::now();
    for (std::size_t i = 1; i <= runs; ++i) {
        if (!run(i)) {
            std::fprintf(stderr, "run %zu failed\n", i);
            return EXIT_FAILURE;
        }
        if (i % (runs / 10) != 0 && i != runs / 100) continue;
        const std::chrono::duration<double, std::micro> took = std::chrono::steady_clock::now() - began;
        std::size_t resident = 0;
        std::ifstream("/proc/self/statm") >> resident >> resident;
        const std::size_t since = i == runs / 100 ? i : i == runs / 10 ? i - runs / 100 : runs / 10;
        std::printf("| %zu | %.0f | %zu | %zu | %td | %td |\n", i, took.count() / static_cast<double>(since),
                    mallinfo2().uordblks / 1024,
                    resident * static_cast<std::size_t>(sysconf(_SC_PAGESIZE)) / 1024,
                    entries("/proc/self/fd") - 1, entries("/proc/self/task"));
        std::fflush(stdout);
        began = std::chrono::steady_clock::now();
    }
    return EXIT_SUCCESS;
}

}  // namespace vento::bench
