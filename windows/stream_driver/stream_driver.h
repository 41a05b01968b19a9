/*
 * The place of the platform's stream driver on a desk with Windows, where there is no device of its
 * name: it sends the library to a serial port. As elsewhere on the desk an environment variable
 * says where:
 *
 *     IPODCTL_DEVICES="IPD1:=COM2"
 *
 * What is no serial port does not open. The DLL takes the place of two functions that ipodctl.dll
 * imports: CreateFileW, for the names in the variable alone, and ReadFile, so that a port whose
 * other end has gone fails the read, where the system would find it silent. All writing and closing
 * is the system's.
 */
#pragma once

#ifdef __cplusplus
extern "C" {
#endif

/*
 * Stands before the ipodctl.dll that is loaded; done by itself for one that is loaded before this
 * DLL, as that of a program linked to both. 1 when it does, 0 when there is no such library.
 */
int streamDriverInstall(void);

#ifdef __cplusplus
}
#endif
