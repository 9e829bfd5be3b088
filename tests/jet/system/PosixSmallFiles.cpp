#include "jet/SmallFiles.h"

#include <csignal>
#include <stdexcept>
#include <sys/resource.h>

struct SmallFiles::Before {
    struct rlimit limit {};
    void (*handler)(int) = nullptr;
};

bool SmallFiles::canBeHad() { return true; }

SmallFiles::SmallFiles(std::uint64_t largest) : before_(std::make_unique<Before>()) {
    before_->handler = std::signal(SIGXFSZ, SIG_IGN);
    if (::getrlimit(RLIMIT_FSIZE, &before_->limit) != 0)
        throw std::runtime_error("getrlimit");
    struct rlimit small = before_->limit;
    small.rlim_cur = largest;
    if (::setrlimit(RLIMIT_FSIZE, &small) != 0)
        throw std::runtime_error("setrlimit");
}

SmallFiles::~SmallFiles() {
    static_cast<void>(::setrlimit(RLIMIT_FSIZE, &before_->limit));
    static_cast<void>(std::signal(SIGXFSZ, before_->handler));
}
