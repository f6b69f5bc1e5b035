#include "filesizelimit.h"

#include <csignal>

FileSizeLimit::FileSizeLimit(rlim_t bytes)
{
    if (getrlimit(RLIMIT_FSIZE, &m_saved) != 0)
        return;
    m_signal = std::signal(SIGXFSZ, SIG_IGN);
    rlimit limited = m_saved;
    limited.rlim_cur = bytes;
    m_set = setrlimit(RLIMIT_FSIZE, &limited) == 0;
}

FileSizeLimit::~FileSizeLimit()
{
    if (m_set)
        setrlimit(RLIMIT_FSIZE, &m_saved);
    if (m_signal != SIG_ERR && m_signal != nullptr)
        std::signal(SIGXFSZ, m_signal);
}
