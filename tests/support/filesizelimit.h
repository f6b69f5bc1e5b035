#pragma once

#include <sys/resource.h>

/// While it lives, no file this process writes grows past a few bytes, as
/// on a full disk: a write beyond fails (EFBIG) instead of raising SIGXFSZ.
/// Needs no privilege: a process may lower its own limit and raise it back
/// to the hard one. Pipes and terminals are not files, so the test's output
/// still gets through.
class FileSizeLimit
{
public:
    explicit FileSizeLimit(rlim_t bytes);
    ~FileSizeLimit();
    FileSizeLimit(const FileSizeLimit &) = delete;
    FileSizeLimit &operator=(const FileSizeLimit &) = delete;

    /// Whether the limit is in force.
    bool isSet() const { return m_set; }

private:
    rlimit m_saved{};
    void (*m_signal)(int) = nullptr;
    bool m_set = false;
};
