// What a process asks of the instance of Corvatto that runs already: one line over a socket that only its
// user can reach. Needs no Qt, so that a key which is bound to a request is answered at once.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include <sys/un.h>

namespace corvatto {

// $XDG_RUNTIME_DIR/corvatto, else a directory of the user's own below the system's temporary one, also when
// the path is too long for the name of a socket. Need not exist.
std::string instanceDirectory();

// Whether the directory is this user's and no link. Another user may have put one there to read our requests.
bool isOwnDirectory(const std::string& directory);

// The socket of the instance that keeps it in `directory`.
std::string instanceSocket(const std::string& directory);

// Absent when the path is too long for the name of a socket.
std::optional<sockaddr_un> socketAddress(const std::string& path);

// The request for one line about the running instance. Others have only `doneLine` for an answer.
inline constexpr std::string_view statusRequest = "status";
// The last line of each answer.
inline constexpr std::string_view doneLine = "done\n";

struct Answer {
    enum class Outcome {
        Done,  // the running instance does what it was asked to
        None,  // it does not answer, and will not do it later
        Nobody // no instance is running
    };

    Outcome outcome = Outcome::None;
    std::string text; // what it said, without `doneLine`
};

// Sends `request` and waits up to five seconds for the answer. Blocks, so only for a process that does
// nothing else.
Answer askInstance(const std::string& directory, std::string_view request);

// Says on standard error why there was no answer, and returns the exit status for that.
int reportNoAnswer(Answer::Outcome outcome);

} // namespace corvatto
