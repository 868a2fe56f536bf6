#include "command/InstanceRequest.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>

namespace corvatto {
namespace {

constexpr time_t answerSeconds = 5;
constexpr std::size_t longestAnswer = 1024;

struct Descriptor {
    const int value;
    explicit Descriptor(int descriptor) : value(descriptor) {}
    ~Descriptor() { close(value); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
};

std::string variable(const char* name, const char* otherwise) {
    const char* value = std::getenv(name);
    return value != nullptr && value[0] == '/' ? value : otherwise;
}

bool isDirectory(const std::string& path) {
    struct stat status {};
    return stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

} // namespace

std::string instanceDirectory() {
    const std::string runtime = variable("XDG_RUNTIME_DIR", "");
    const std::string directory = runtime + "/corvatto";
    if (!runtime.empty() && isDirectory(runtime) && socketAddress(instanceSocket(directory))) {
        return directory;
    }
    return variable("TMPDIR", "/tmp") + "/corvatto-" + std::to_string(getuid());
}

bool isOwnDirectory(const std::string& directory) {
    struct stat status {};
    return lstat(directory.c_str(), &status) == 0 && S_ISDIR(status.st_mode) && status.st_uid == getuid();
}

std::string instanceSocket(const std::string& directory) {
    return directory + "/instance";
}

std::optional<sockaddr_un> socketAddress(const std::string& path) {
    sockaddr_un address{};
    if (path.size() >= sizeof address.sun_path) {
        return std::nullopt;
    }
    address.sun_family = AF_UNIX;
    std::copy(path.begin(), path.end(), address.sun_path);
    return address;
}

Answer askInstance(const std::string& directory, std::string_view request) {
    using Outcome = Answer::Outcome;
    const auto address = socketAddress(instanceSocket(directory));
    if (!address || !isOwnDirectory(directory)) {
        return {Outcome::Nobody, {}};
    }
    const Descriptor descriptor(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    const timeval timeout{answerSeconds, 0};
    setsockopt(descriptor.value, SOL_SOCKET, SO_RCVTIMEO, &timeout, sizeof timeout);
    setsockopt(descriptor.value, SOL_SOCKET, SO_SNDTIMEO, &timeout, sizeof timeout);
    if (connect(descriptor.value, reinterpret_cast<const sockaddr*>(&*address), sizeof *address) != 0) {
        // So many may be waiting already that there is no place to wait.
        return {errno == EAGAIN ? Outcome::None : Outcome::Nobody, {}};
    }
    const std::string line = std::string(request) + '\n';
    if (send(descriptor.value, line.data(), line.size(), MSG_NOSIGNAL) != static_cast<ssize_t>(line.size())) {
        return {Outcome::None, {}};
    }
    std::array<char, longestAnswer> answer{};
    const ssize_t length = recv(descriptor.value, answer.data(), answer.size(), MSG_WAITALL); // to its end
    std::string text(answer.data(), static_cast<std::size_t>(std::max(length, ssize_t{0})));
    if (!text.ends_with(doneLine)) {
        return {Outcome::None, {}};
    }
    text.resize(text.size() - doneLine.size());
    return {Outcome::Done, std::move(text)};
}

int reportNoAnswer(Answer::Outcome outcome) {
    std::fputs(outcome == Answer::Outcome::Nobody
                   ? "corvatto: no Corvatto is running.\n"
                   : "corvatto: a Corvatto is running, but it does not answer.\n",
               stderr);
    return EXIT_FAILURE;
}

} // namespace corvatto
