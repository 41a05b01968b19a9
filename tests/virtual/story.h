#pragma once

#include <string>
#include <vector>

namespace virtual_session {

using Lines = std::vector<std::string>;

/// The lines of a trace that a host, an iPod and the audio library see, in order and without times:
///
///     calls IpodSongPlay
///     takes the library's lock
///     sends 55 07 04 00 28 00 00 00 00 CD
///     PostMessageW(0xffff, 0x2400, 0, 0)
///     releases the library's lock
///     returns 0
///
/// Lines of the reader begin with "reader: ". How the threads wait for each other is omitted.
Lines storyOf(const Lines& trace);

/// Returns whether a line of a trace is about the library's state.
bool tellsOfState(const std::string& line);

/// Returns "", or the first line of a trace of exports that needs the library's lock and happened
/// without it. Only the holder of the lock may call the iPod, the audio library, the host and the
/// console, and change the library's state.
std::string findDisorder(const Lines& trace);

}  // namespace virtual_session
