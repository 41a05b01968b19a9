/*
 * Replaces the platform's stream driver on Windows, which has no device of its name, with a TCP
 * port or a serial port. An environment variable names it, as on the Linux host:
 *
 *     IPODCTL_DEVICES="IPD1:=tcp:127.0.0.1:5000"      an ipodsim on this machine
 *     IPODCTL_DEVICES="IPD1:=COM2"
 *
 * Without the variable, IPD1: is the system's device of this name; if there is none, it is
 * 127.0.0.1:5000, where ipodsim is without options.
 *
 * The DLL replaces four functions that ipodctl.dll imports: CreateFileW, only for the names in the
 * variable, ReadFile, WriteFile and CloseHandle. Other names and handles are passed to the system.
 * A read of a serial port fails when its other end has closed; for the system such a port is only
 * silent. A device that cannot be opened is a line on standard error. If the recorder ipodtrace.dll
 * is loaded, its imports are replaced instead, so that it sees the calls first.
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
