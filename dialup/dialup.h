// Dials the configured phone-book entry before a run and hangs up after it. User-interface thread only; a
// call reports by window messages.
#pragma once

#include <memory>

#include "platform/ras.h"

// Sent or posted to the frame.
constexpr UINT kStartRunMessage = 0x0400;  // the line is up
constexpr UINT kHangUpMessage = 0x0401;    // enable the frame and hang up

// Whether a connection is up already, whoever made it.
bool IsLineUp();

// Disables the frame, shows the connect dialog and starts dialling `entry`; `connection` outlives the call.
// The dialog posts kStartRunMessage when the line is up, kHangUpMessage when it fails or the user cancels.
void StartDial(HWND frame, HINSTANCE instance, const wchar_t* entry, HRASCONN* connection);

// Runs the disconnect dialog: hangs up after `seconds` by sending kHangUpMessage to the frame; the user may
// keep the line.
void RunDisconnectDialog(HWND frame, HINSTANCE instance, uint32_t seconds);

// The names of the phone book, at most 100. Null when it cannot be read.
struct PhoneBook {
    static constexpr DWORD kCapacity = 100;
    RasEntryName entries[kCapacity];
    DWORD count = 0;
};
std::unique_ptr<PhoneBook> ReadPhoneBook();
