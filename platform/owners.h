// One tiny move-only owner for each call that releases something.
#pragma once

#include "platform/platform.h"

// `Traits` gives the handle's type, the value that means none, and the call that releases a handle.
template <class Traits>
class Owner {
  public:
    using Handle = typename Traits::Handle;

    Owner() = default;
    explicit Owner(Handle handle) : handle_(handle) {}
    ~Owner() { Reset(); }
    Owner(const Owner&) = delete;
    Owner& operator=(const Owner&) = delete;
    Owner(Owner&& other) noexcept : handle_(other.Release()) {}
    Owner& operator=(Owner&& other) noexcept {
        if (this != &other) Reset(other.Release());
        return *this;
    }

    Handle Get() const { return handle_; }
    explicit operator bool() const { return handle_ != Traits::None(); }

    // Gives the handle to the caller, who then releases it.
    Handle Release() {
        const Handle handle = handle_;
        handle_ = Traits::None();
        return handle;
    }

    // The last error survives the release.
    void Reset(Handle handle = Traits::None()) {
        if (handle_ != Traits::None()) {
            const DWORD error = GetLastError();
            Traits::Free(handle_);
            SetLastError(error);
        }
        handle_ = handle;
    }

  private:
    Handle handle_ = Traits::None();
};

struct FileTraits {
    using Handle = HANDLE;
    static Handle None() { return INVALID_HANDLE_VALUE; }
    static void Free(Handle handle) { CloseHandle(handle); }
};

struct FindTraits {
    using Handle = HANDLE;
    static Handle None() { return INVALID_HANDLE_VALUE; }
    static void Free(Handle handle) { FindClose(handle); }
};

struct RegistryKeyTraits {
    using Handle = HKEY;
    static Handle None() { return nullptr; }
    static void Free(Handle handle) { RegCloseKey(handle); }
};

struct HeapTraits {
    using Handle = HANDLE;
    static Handle None() { return nullptr; }
    static void Free(Handle handle) { HeapDestroy(handle); }
};

struct FontTraits {
    using Handle = HFONT;
    static Handle None() { return nullptr; }
    static void Free(Handle handle) { DeleteObject(handle); }
};

struct ThreadTraits {  // the thread itself runs on
    using Handle = HANDLE;
    static Handle None() { return nullptr; }
    static void Free(Handle handle) { CloseHandle(handle); }
};

struct TurnTraits {  // an event that is set while it is nobody's turn
    using Handle = HANDLE;
    static Handle None() { return nullptr; }
    static void Free(Handle handle) {
        SetEvent(handle);
        CloseHandle(handle);
    }
};

struct WindowTraits {  // released on the thread that made it
    using Handle = HWND;
    static Handle None() { return nullptr; }
    static void Free(Handle handle) { DestroyWindow(handle); }
};

struct DcTraits {  // a memory device context
    using Handle = HDC;
    static Handle None() { return nullptr; }
    static void Free(Handle handle) { DeleteDC(handle); }
};

struct MenuTraits {
    using Handle = HMENU;
    static Handle None() { return nullptr; }
    static void Free(Handle handle) { DestroyMenu(handle); }
};

struct ImageListTraits {
    using Handle = HIMAGELIST;
    static Handle None() { return nullptr; }
    static void Free(Handle handle) { ImageList_Destroy(handle); }
};

struct HookTraits {
    using Handle = HHOOK;
    static Handle None() { return nullptr; }
    static void Free(Handle handle) { UnhookWindowsHookEx(handle); }
};

struct SocketTraits {
    using Handle = SOCKET;
    static Handle None() { return INVALID_SOCKET; }
    static void Free(Handle handle) { closesocket(handle); }
};

struct BitmapTraits {
    using Handle = HBITMAP;
    static Handle None() { return nullptr; }
    static void Free(Handle handle) { DeleteObject(handle); }
};

struct WinsockTraits {  // true: WSAStartup has succeeded
    using Handle = bool;
    static bool None() { return false; }
    static void Free(bool) { WSACleanup(); }
};

using WinsockOwner = Owner<WinsockTraits>;
using TurnOwner = Owner<TurnTraits>;
using WindowOwner = Owner<WindowTraits>;
using DcOwner = Owner<DcTraits>;
using BitmapOwner = Owner<BitmapTraits>;
using MenuOwner = Owner<MenuTraits>;
using ImageListOwner = Owner<ImageListTraits>;
using HookOwner = Owner<HookTraits>;
using SocketOwner = Owner<SocketTraits>;
using ThreadOwner = Owner<ThreadTraits>;
using FileOwner = Owner<FileTraits>;
using FindOwner = Owner<FindTraits>;
using RegistryKeyOwner = Owner<RegistryKeyTraits>;
using HeapOwner = Owner<HeapTraits>;
using FontOwner = Owner<FontTraits>;

// A window's own device context. The last error survives the release.
class WindowDc {
  public:
    explicit WindowDc(HWND window) : window_(window), dc_(GetDC(window)) {}
    ~WindowDc() {
        const DWORD error = GetLastError();
        ReleaseDC(window_, dc_);
        SetLastError(error);
    }
    WindowDc(const WindowDc&) = delete;
    WindowDc& operator=(const WindowDc&) = delete;

    HDC Get() const { return dc_; }

  private:
    HWND window_;
    HDC dc_;
};

// Selects an object into a device context until the end of the scope; nothing when it is null.
class Selection {
  public:
    Selection(HDC dc, HGDIOBJ object) : dc_(dc), before_(object ? SelectObject(dc, object) : nullptr) {}
    ~Selection() {
        if (before_) SelectObject(dc_, before_);
    }
    Selection(const Selection&) = delete;
    Selection& operator=(const Selection&) = delete;

  private:
    HDC dc_;
    HGDIOBJ before_;
};
