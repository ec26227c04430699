#pragma once
// StreamFile and PStream: values packed into bytes and back, for the small
// binary files an application keeps beside its settings.
//
// - StreamFile holds the bytes of one file: load() reads it whole, save()
//   writes it atomically (a reader never sees half a file), and a file that
//   could not be read is never written over by save().
// - PStream packs fixed-size values onto the end of the file's bytes and
//   unpacks them from a read position: bytes as they are, 32-bit integers and
//   doubles (IEEE 754 bits) little-endian, whatever the machine.
// - Reading past the end leaves the value at zero and the stream failed; a
//   failed stream stays failed, so a caller may unpack a whole record and
//   check once.

#include "tela/core/LightweightString.h"

#include <cstddef>
#include <cstdint>
#include <string>

class StreamFile {
public:
    StreamFile() = default;   // bytes in memory only: load and save do nothing
    explicit StreamFile(const String& path);

    // Replaces the bytes by the file's and rewinds. A missing file is an empty
    // one; a file that is there but cannot be read is reported, and then
    // save() refuses to write over it.
    bool load();
    bool save() const;

    // A byte put down as it stands: the revision byte that opens a record.
    void setCookedChar(unsigned char c);

    void write(const void* bytes, std::size_t count);
    bool read(void* bytes, std::size_t count);   // false, with nothing read, past the end

    const std::string& bytes() const { return m_bytes; }
    void setBytes(std::string bytes);            // and rewinds
    std::size_t readPosition() const { return m_readPosition; }
    bool atEnd() const { return m_readPosition >= m_bytes.size(); }

private:
    String m_path;
    std::string m_bytes;
    std::size_t m_readPosition = 0;
    bool m_unreadable = false;
};

class PStream {
public:
    explicit PStream(StreamFile& file) : m_file(file) {}

    StreamFile& file() const { return m_file; }
    bool good() const { return !m_failed; }

    PStream& operator<<(unsigned char value);
    PStream& operator<<(std::int32_t value);
    PStream& operator<<(std::uint32_t value);
    PStream& operator<<(double value);

    PStream& operator>>(unsigned char& value);
    PStream& operator>>(std::int32_t& value);
    PStream& operator>>(std::uint32_t& value);
    PStream& operator>>(double& value);

private:
    bool take(void* bytes, std::size_t count);

    StreamFile& m_file;
    bool m_failed = false;
};
