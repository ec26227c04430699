#include "core/AtomicFile.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

namespace {

bool fail(std::string* error, const std::string& what)
{
    if (error)
        *error = what + ": " + std::strerror(errno);
    return false;
}

} // namespace

bool Qv::writeFileAtomically(const std::string& path, std::string_view bytes, std::string* error)
{
    const std::string temporary = path + ".tmp." + std::to_string(::getpid());
    const int fd = ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (fd < 0)
        return fail(error, "cannot create " + temporary);
    std::size_t written = 0;
    while (written < bytes.size()) {
        const ssize_t n = ::write(fd, bytes.data() + written, bytes.size() - written);
        if (n < 0) {
            if (errno == EINTR)
                continue;
            const bool result = fail(error, "cannot write " + temporary);
            ::close(fd);
            ::unlink(temporary.c_str());
            return result;
        }
        written += static_cast<std::size_t>(n);
    }
    if (::fsync(fd) != 0 || ::close(fd) != 0) {
        const bool result = fail(error, "cannot flush " + temporary);
        ::unlink(temporary.c_str());
        return result;
    }
    if (::rename(temporary.c_str(), path.c_str()) != 0) {
        const bool result = fail(error, "cannot replace " + path);
        ::unlink(temporary.c_str());
        return result;
    }
    return true;
}

bool Qv::readFile(const std::string& path, std::string& out)
{
    std::FILE* file = std::fopen(path.c_str(), "rb");
    if (!file)
        return false;
    out.clear();
    char buffer[4096];
    std::size_t n;
    while ((n = std::fread(buffer, 1, sizeof buffer, file)) > 0)
        out.append(buffer, n);
    const bool ok = !std::ferror(file);
    std::fclose(file);
    return ok;
}
