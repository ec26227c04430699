#include "tela/core/AtomicFile.h"

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <dirent.h>
#include <fcntl.h>
#include <signal.h>
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

// This process's mark in its temporaries' names, beside its pid: a process
// that had the same pid before (containers restart programs with the same
// small pids) has another, so what it left behind is known for stale.
const char* incarnation()
{
    struct Mark {
        char text[24];
    };
    static const Mark mark = [] {
        timespec now {};
        ::clock_gettime(CLOCK_REALTIME, &now);
        Mark made {};
        std::snprintf(made.text, sizeof made.text, "%llx",
                      static_cast<unsigned long long>(now.tv_sec) * 1000000000ull +
                          static_cast<unsigned long long>(now.tv_nsec));
        return made;
    }();
    return mark.text;
}

// <target>.tmp.<pid>.<incarnation>.<serial>: unique per process and per call,
// so two threads writing the same target each have a temporary of their own
// and the last rename wins whole.
String temporary_path_for(const String& path)
{
    static std::atomic<unsigned> s_serial{0};
    char suffix[96];
    std::snprintf(suffix, sizeof suffix, ".tmp.%ld.%s.%u", static_cast<long>(::getpid()), incarnation(),
                  s_serial.fetch_add(1));
    String temporary(path);
    temporary += std::string_view(suffix);
    return temporary;
}

bool all_of(std::string_view text, bool (*accept)(char))
{
    if (text.empty())
        return false;
    for (const char c : text)
        if (!accept(c))
            return false;
    return true;
}

bool decimal(char c) { return c >= '0' && c <= '9'; }
bool hexadecimal(char c) { return decimal(c) || (c >= 'a' && c <= 'f'); }

// Whether `name`, in the target's directory, is a temporary of ours for the
// target `base` that no live writer can be using. Ours are
// <base>.tmp.<pid>.<incarnation>.<serial>, or <base>.tmp.<pid>.<serial> from
// before the incarnation mark. One is stale when its process is gone, or when
// its pid is ours but it is not of this incarnation: this process removes
// its own temporaries whenever a write fails. A pid that is alive is left
// alone, whoever has it now; kill() with no signal only asks.
bool is_stale_temporary(std::string_view name, std::string_view base)
{
    const std::string_view marker = ".tmp.";
    if (name.size() <= base.size() + marker.size() || name.substr(0, base.size()) != base ||
        name.substr(base.size(), marker.size()) != marker)
        return false;
    std::string_view rest = name.substr(base.size() + marker.size());
    const std::size_t first_dot = rest.find('.');
    if (first_dot == std::string_view::npos)
        return false;
    const std::string_view pid_text = rest.substr(0, first_dot);
    rest.remove_prefix(first_dot + 1);
    std::string_view mark;
    const std::size_t second_dot = rest.find('.');
    if (second_dot != std::string_view::npos) {
        mark = rest.substr(0, second_dot);
        rest.remove_prefix(second_dot + 1);
        if (!all_of(mark, hexadecimal))
            return false;
    }
    if (!all_of(pid_text, decimal) || pid_text.size() > 9 || !all_of(rest, decimal))
        return false;
    long pid = 0;
    for (const char c : pid_text)
        pid = pid * 10 + (c - '0');
    if (pid <= 0)
        return false;
    if (pid == static_cast<long>(::getpid()))
        return mark != std::string_view(incarnation());
    return ::kill(static_cast<pid_t>(pid), 0) != 0 && errno == ESRCH;
}

// A writer killed between creating its temporary and renaming it leaves the
// temporary behind; each write of the target sweeps up those of earlier
// writers that are gone. Failures only leave them for the next write.
void remove_stale_temporaries_of(const String& path)
{
    const std::string_view view = path.view();
    const std::size_t slash = view.rfind('/');
    const String directory = slash == std::string_view::npos ? String(".") : slash == 0 ? String("/") : path.substr(0, slash);
    const std::string_view base = slash == std::string_view::npos ? view : view.substr(slash + 1);
    DIR* listing = ::opendir(directory.c_str());
    if (!listing)
        return;
    const int directory_fd = ::dirfd(listing);
    while (const dirent* entry = ::readdir(listing))
        if (is_stale_temporary(entry->d_name, base))
            ::unlinkat(directory_fd, entry->d_name, 0);
    ::closedir(listing);
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
    remove_stale_temporaries_of(path);
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
    // Callers tell a missing file from an unreadable one by errno.
    const int read_error = errno;
    std::fclose(file);
    errno = read_error;
    if (ok)
        out = content.isNull() ? String("") : content;
    return ok;
}
