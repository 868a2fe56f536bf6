// A file descriptor that is closed with its owner.
#pragma once

#include <unistd.h>

#include <utility>

namespace corvatto {

class FileDescriptor {
public:
    FileDescriptor() = default;
    explicit FileDescriptor(int number) : m_number(number) {}
    ~FileDescriptor() { close(); }
    FileDescriptor(FileDescriptor&& other) noexcept : m_number(std::exchange(other.m_number, -1)) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept {
        close();
        m_number = std::exchange(other.m_number, -1);
        return *this;
    }

    bool isOpen() const { return m_number >= 0; }
    int number() const { return m_number; }
    void close() {
        if (isOpen()) {
            ::close(std::exchange(m_number, -1));
        }
    }

private:
    int m_number = -1;
};

} // namespace corvatto
