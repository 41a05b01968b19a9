#pragma once

#include <windows.h>

// A TCP connection in place of a device. Its handle is that of the socket.

/// Connects to "HOST:PORT" within three seconds. Returns INVALID_HANDLE_VALUE when nothing answers.
HANDLE openTcpDevice(const wchar_t* place);

/// Returns whether this is the handle of a socket.
bool isTcpDevice(HANDLE device);

/// Waits until there are bytes, at most `limit` milliseconds, and returns those that have arrived.
/// Fails when the other end has closed.
BOOL readTcpDevice(HANDLE device, void* buffer, DWORD maximum, DWORD* received, DWORD limit);

/// Writes all bytes. Fails when the other end has closed, or takes nothing for three seconds.
BOOL writeTcpDevice(HANDLE device, const void* bytes, DWORD count, DWORD* written);

BOOL closeTcpDevice(HANDLE device);
