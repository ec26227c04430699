// Log.h: murl_printf, the library's one output channel for run-time trouble.
// Text goes to stderr, or to the sink a test installs to read it back.
#pragma once

#include <cstdarg>

void murl_printf(const char* format, ...) __attribute__((format(printf, 1, 2)));
void murl_vprintf(const char* format, va_list arguments) __attribute__((format(printf, 1, 0)));
// A message meant for both the log and the console. Both are murl_printf's
// one channel here, so it is murl_printf under the name older modules use.
void LogBoth(const char* format, ...) __attribute__((format(printf, 1, 2)));

// While on, each message is written and flushed before murl_printf returns,
// so that nothing is lost if the process dies during start-up. The
// application turns it on first thing and off once start-up is over.
void setSynchronousLogging(bool synchronous);
bool synchronousLogging();

// tela_splat: the report of a programming error. It prints and returns: the
// caller always carries on.
// The message is the printf format of the report, so "%%" prints one percent
// sign. The library passes only fixed messages of its own. Text that comes
// from data must not be given here: report it with murl_printf("%s", text).
// A message whose conversions would want arguments is printed as it stands.
void tela_splat(const char* message) __attribute__((format(printf, 1, 0)));

// zeb_splat: the report of a class used against its contract (a call that
// must not be made). `text` is printed as it stands, on a line of its own;
// the caller carries on.
void zeb_splat(const char* text);

namespace Qv {
// Receives each formatted message. Passing null restores stderr. Returns the previous sink.
using LogSink = void (*)(const char* text, void* context);
struct LogSinkRecord {
    LogSink sink = nullptr;
    void* context = nullptr;
};
LogSinkRecord setLogSink(LogSinkRecord record);
} // namespace Qv
