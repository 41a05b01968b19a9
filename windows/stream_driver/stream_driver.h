/*
 * Replaces the platform's stream driver on Windows, which has no device of its name, with a serial
 * port. An environment variable names the port, as on the Linux host:
 *
 *     IPODCTL_DEVICES="IPD1:=COM2"
 *
 * Only a serial port can be opened. The DLL replaces two functions that ipodctl.dll imports:
 * CreateFileW, only for the names in the variable, and ReadFile, so that a read fails when the
 * other end of the port has closed. For the system such a port is only silent. The system's
 * functions write and close. If the recorder ipodtrace.dll is loaded, its imports are replaced
 * instead, so that it sees the calls first.
 */
#pragma once

#ifdef __cplusplus
extern "C" {
#endif

/*
 * Replaces the functions of the loaded ipodctl.dll. This happens by itself for an ipodctl.dll that
 * is loaded before this DLL, as in a program that is linked to both. Returns 1, or 0 when there is
 * no such library.
 */
int streamDriverInstall(void);

#ifdef __cplusplus
}
#endif
