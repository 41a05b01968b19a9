#pragma once

#include <string>
#include <vector>

namespace virtual_session {

using Lines = std::vector<std::string>;

/// What a host, an iPod and the audio library see of a trace, in order and without its times:
///
///     calls IpodSongPlay
///     takes the library's lock
///     sends 55 07 04 00 28 00 00 00 00 CD
///     PostMessageW(0xffff, 0x2400, 0, 0)
///     releases the library's lock
///     returns 0
///
/// Lines of the reader begin with "reader: ". Left out is how the threads wait for each other.
Lines storyOf(const Lines& trace);

/// Whether a line of a trace is of the library's state.
bool tellsOfState(const std::string& line);

/// Empty, or the first line of a trace of exports that was done without the library's lock and may
/// not: to talk to the iPod, the audio library, the host and the console, and to change what the
/// library knows, is for the one who holds it.
std::string findDisorder(const Lines& trace);

}  // namespace virtual_session
