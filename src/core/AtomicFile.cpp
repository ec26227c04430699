#include "core/AtomicFile.h"

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

bool fail(std::string* error, const char* step, const String& path)
{
    if (error) {
        char message[512];
        std::snprintf(message, sizeof message, "cannot %s %s: %s", step, path.c_str(), std::strerror(errno));
        *error = message;
    }
    return false;
}

// Unique per process and per call, so two threads writing the same target
// each have a temporary of their own and the last rename wins whole.
String temporary_path_for(const String& path)
{
    static std::atomic<unsigned> s_serial{0};
    char suffix[64];
    std::snprintf(suffix, sizeof suffix, ".tmp.%ld.%u", static_cast<long>(::getpid()), s_serial.fetch_add(1));
    String temporary(path);
    temporary += std::string_view(suffix);
    return temporary;
}

// The rename is only durable once the directory entry is; a directory that
// cannot be synced (some file systems refuse) still got the rename.
void sync_directory_of(const String& path)
{
    const std::string_view view = path.view();
    const std::size_t slash = view.rfind('/');
    const String directory = slash == std::string_view::npos ? String(".") : slash == 0 ? String("/") : path.substr(0, slash);
    const int fd = ::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0)
        return;
    ::fsync(fd);
    ::close(fd);
}

bool write_all(int fd, std::string_view bytes)
{
    std::size_t written = 0;
    while (written < bytes.size()) {
        const ssize_t count = ::write(fd, bytes.data() + written, bytes.size() - written);
        if (count < 0) {
            if (errno == EINTR)
                continue;
            return false;
        }
        written += static_cast<std::size_t>(count);
    }
    return true;
}

} // namespace

bool Qv::writeFileAtomically(std::string_view path_view, std::string_view bytes, std::string* error)
{
    const String path(path_view.data(), path_view.size());
    const String temporary = temporary_path_for(path);
    const int fd = ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644);
    if (fd < 0)
        return fail(error, "create", temporary);

    struct stat existing {};
    if (::stat(path.c_str(), &existing) == 0)
        ::fchmod(fd, existing.st_mode & 07777);

    // Every failure below removes the temporary; errno is kept across the clean-up.
    const auto abandon = [&](const char* step, const String& subject) {
        const int saved = errno;
        ::unlink(temporary.c_str());
        errno = saved;
        return fail(error, step, subject);
    };
    if (!write_all(fd, bytes)) {
        const int saved = errno;
        ::close(fd);
        errno = saved;
        return abandon("write", temporary);
    }
    if (::fsync(fd) != 0) {
        const int saved = errno;
        ::close(fd);
        errno = saved;
        return abandon("flush", temporary);
    }
    if (::close(fd) != 0)
        return abandon("flush", temporary);
    if (::rename(temporary.c_str(), path.c_str()) != 0)
        return abandon("replace", path);
    sync_directory_of(path);
    return true;
}

bool Qv::readFile(std::string_view path_view, String& out)
{
    const String path(path_view.data(), path_view.size());
    std::FILE* file = std::fopen(path.c_str(), "rb");
    if (!file)
        return false;
    String content;
    char buffer[4096];
    std::size_t count;
    while ((count = std::fread(buffer, 1, sizeof buffer, file)) > 0)
        content.append(buffer, count);
    const bool ok = !std::ferror(file);
    std::fclose(file);
    if (ok)
        out = content.isNull() ? String("") : content;
    return ok;
}
