#pragma once

#ifdef _WIN32
#include "platform/windows/system.h"
// They need that before them.
#include <psapi.h>
#include <tlhelp32.h>
#else
#include <dirent.h>
#include <malloc.h>
#include <unistd.h>

#include <fstream>
#endif

#include <algorithm>
#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iterator>

namespace vento::bench {

#ifdef _WIN32
constexpr std::array kHeld{"heap KiB", "resident KiB", "next handle", "next window", "next brush", "threads"};

inline std::size_t AllocatedBytes() {
    std::array<HANDLE, 16> heaps{};
    const DWORD count = ::GetProcessHeaps(heaps.size(), heaps.data());
    std::size_t bytes = 0;
    for (std::size_t i = 0; i < std::min<std::size_t>(count, heaps.size()); ++i) {
        PROCESS_HEAP_ENTRY entry{};
        ::HeapLock(heaps.at(i));
        while (::HeapWalk(heaps.at(i), &entry) != 0)
            bytes += (entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0 ? entry.cbData : 0U;
        ::HeapUnlock(heaps.at(i));
    }
    return bytes;
}

/// What the process has, as kHeld names it. Wine does not count handles; it gives the lowest that is free, so
/// that one which nobody has closed shows in the next.
inline std::array<std::size_t, kHeld.size()> Held() {
    const auto index = [](HANDLE handle) { return reinterpret_cast<std::size_t>(handle) & 0xFFFFU; };
    PROCESS_MEMORY_COUNTERS memory{};
    ::GetProcessMemoryInfo(::GetCurrentProcess(), &memory, sizeof memory);
    std::size_t threads = 0;
    HANDLE const all = ::CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
    const std::size_t handle = index(all);
    THREADENTRY32 thread{};
    thread.dwSize = sizeof thread;
    for (BOOL more = ::Thread32First(all, &thread); more != 0; more = ::Thread32Next(all, &thread))
        threads += thread.th32OwnerProcessID == ::GetCurrentProcessId() ? 1U : 0U;
    ::CloseHandle(all);
    HWND const window =
        ::CreateWindowExW(0, L"STATIC", L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr);
    ::DestroyWindow(window);
    HBRUSH const brush = ::CreateSolidBrush(RGB(1, 2, 3));
    ::DeleteObject(brush);
    return {
        AllocatedBytes() / 1024, memory.WorkingSetSize / 1024, handle, index(window), index(brush), threads};
}
#else
constexpr std::array kHeld{"heap KiB", "resident KiB", "files", "threads"};

/// What the process has, as kHeld names it.
inline std::array<std::size_t, kHeld.size()> Held() {
    const auto entries = [](const char* folder) {
        return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator(folder), {}));
    };
    std::size_t resident = 0;
    std::ifstream("/proc/self/statm") >> resident >> resident;
    return {mallinfo2().uordblks / 1024, resident * static_cast<std::size_t>(sysconf(_SC_PAGESIZE)) / 1024,
            entries("/proc/self/fd") - 1, entries("/proc/self/task")};
}
#endif

/// Counts runs in this process and says after each tenth of them how long one took and what the process has.
class Endurance {
  public:
    explicit Endurance(std::size_t runs) : runs_(runs) {
        std::printf("|   run | µs a run |");
        for (const char* each : kHeld)
            std::printf(" %s |", each);
        std::puts("");
    }

    /// A run has ended. False if there is to be no other.
    bool Add(bool good) {
        ++done_;
        if (!good) std::fprintf(stderr, "run %zu failed\n", done_);
        failed_ = failed_ || !good;
        if (!failed_ && (done_ % (runs_ / 10) == 0 || done_ == runs_ / 100)) Tell();
        return !failed_ && done_ < runs_;
    }

    [[nodiscard]] std::size_t Done() const { return done_; }
    [[nodiscard]] int Status() const { return failed_ ? EXIT_FAILURE : EXIT_SUCCESS; }

  private:
    void Tell() {
        const std::chrono::duration<double, std::micro> took = std::chrono::steady_clock::now() - began_;
        std::printf("| %zu | %.0f |", done_, took.count() / static_cast<double>(done_ - told_));
        for (const std::size_t each : Held())
            std::printf(" %zu |", each);
        std::puts("");
        std::fflush(stdout);
        told_ = done_;
        began_ = std::chrono::steady_clock::now();
    }

    std::size_t runs_;
    std::size_t done_ = 0;
    std::size_t told_ = 0;
    bool failed_ = false;
    std::chrono::steady_clock::time_point began_ = std::chrono::steady_clock::now();
};

/// Calls `run` with the number of each run, from 1 on, until they are all done or one gives false.
template <class Run>
int Endure(std::size_t runs, Run run) {
    Endurance endurance(runs);
    while (endurance.Add(run(endurance.Done() + 1))) {
    }
    return endurance.Status();
}

}  // namespace vento::bench
