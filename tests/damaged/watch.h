// Names the row of a table at which the process crashes or stands still, and ends it.
#pragma once

#include <winsock2.h>

#include <windows.h>

#include <cstdio>
#include <string>
#include <thread>

class Watch {
  public:
    Watch() {
        handler_ = AddVectoredExceptionHandler(1, OnException);
        ended_ = CreateEventW(nullptr, TRUE, FALSE, nullptr);
        thread_ = std::thread([this] { LookOut(); });
    }
    ~Watch() {
        SetEvent(ended_);
        thread_.join();
        CloseHandle(ended_);
        RemoveVectoredExceptionHandler(handler_);
    }
    Watch(const Watch&) = delete;
    Watch& operator=(const Watch&) = delete;

    void Begin(const std::string& row) {
        std::snprintf(row_, sizeof(row_), "%s", row.c_str());
        InterlockedIncrement(&count_);
    }

  private:
    static constexpr DWORD kPatience = 20000;  // milliseconds that a row may take

    static void End(const char* what, unsigned long code) {
        std::printf("%s %08lX at row: %s\n", what, code, row_);
        std::fflush(stdout);
        TerminateProcess(GetCurrentProcess(), 3);
    }
    static LONG CALLBACK OnException(EXCEPTION_POINTERS* pointers) {
        const DWORD code = pointers->ExceptionRecord->ExceptionCode;
        if (code >> 28 == 0xC) End("crash", code);
        return EXCEPTION_CONTINUE_SEARCH;
    }
    void LookOut() const {
        for (LONG seen = count_; WaitForSingleObject(ended_, kPatience) == WAIT_TIMEOUT; seen = count_) {
            if (seen == count_) End("hang", 0);
        }
    }

    static inline char row_[256] = "none";
    volatile LONG count_ = 0;
    PVOID handler_ = nullptr;
    HANDLE ended_ = nullptr;
    std::thread thread_;
};
