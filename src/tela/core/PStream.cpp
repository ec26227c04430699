#include "tela/core/PStream.h"

#include "tela/core/AtomicFile.h"
#include "tela/core/Log.h"

#include <algorithm>
#include <bit>
#include <cerrno>
#include <cstring>
#include <utility>

namespace {

void put_little_endian(StreamFile& file, std::uint64_t value, std::size_t count)
{
    unsigned char bytes[8];
    for (std::size_t index = 0; index < count; ++index)
        bytes[index] = static_cast<unsigned char>(value >> (8 * index));
    file.write(bytes, count);
}

std::uint64_t from_little_endian(const unsigned char* bytes, std::size_t count)
{
    std::uint64_t value = 0;
    for (std::size_t index = 0; index < count; ++index)
        value |= std::uint64_t(bytes[index]) << (8 * index);
    return value;
}

} // namespace

StreamFile::StreamFile(const String& path) : m_path(path)
{
}

bool StreamFile::load()
{
    if (m_path.empty())
        return true;
    String content;
    if (!Qv::readFile(m_path.view(), content)) {
        if (errno == ENOENT) {
            setBytes(std::string());
            m_unreadable = false;
            return true;
        }
        murl_printf("StreamFile: cannot read %s (%s); it will not be written over\n", m_path.c_str(),
                    std::strerror(errno));
        m_unreadable = true;
        return false;
    }
    setBytes(std::string(content.view()));
    m_unreadable = false;
    return true;
}

bool StreamFile::save() const
{
    if (m_path.empty())
        return true;
    if (m_unreadable) {
        murl_printf("StreamFile: %s could not be read, so it is not written over\n", m_path.c_str());
        return false;
    }
    std::string error;
    if (!Qv::writeFileAtomically(m_path.view(), m_bytes, &error)) {
        murl_printf("StreamFile: cannot write %s: %s\n", m_path.c_str(), error.c_str());
        return false;
    }
    return true;
}

void StreamFile::setCookedChar(unsigned char c)
{
    write(&c, 1);
}

void StreamFile::write(const void* bytes, std::size_t count)
{
    m_bytes.append(static_cast<const char*>(bytes), count);
}

bool StreamFile::read(void* bytes, std::size_t count)
{
    if (count > m_bytes.size() - std::min(m_readPosition, m_bytes.size()))
        return false;
    std::memcpy(bytes, m_bytes.data() + m_readPosition, count);
    m_readPosition += count;
    return true;
}

void StreamFile::setBytes(std::string bytes)
{
    m_bytes = std::move(bytes);
    m_readPosition = 0;
}

PStream& PStream::operator<<(unsigned char value)
{
    m_file.write(&value, 1);
    return *this;
}

PStream& PStream::operator<<(std::int32_t value)
{
    put_little_endian(m_file, static_cast<std::uint32_t>(value), 4);
    return *this;
}

PStream& PStream::operator<<(std::uint32_t value)
{
    put_little_endian(m_file, value, 4);
    return *this;
}

PStream& PStream::operator<<(double value)
{
    put_little_endian(m_file, std::bit_cast<std::uint64_t>(value), 8);
    return *this;
}

bool PStream::take(void* bytes, std::size_t count)
{
    if (m_failed || !m_file.read(bytes, count)) {
        m_failed = true;
        return false;
    }
    return true;
}

PStream& PStream::operator>>(unsigned char& value)
{
    value = 0;
    take(&value, 1);
    return *this;
}

PStream& PStream::operator>>(std::int32_t& value)
{
    unsigned char bytes[4];
    value = take(bytes, 4) ? static_cast<std::int32_t>(from_little_endian(bytes, 4)) : 0;
    return *this;
}

PStream& PStream::operator>>(std::uint32_t& value)
{
    unsigned char bytes[4];
    value = take(bytes, 4) ? static_cast<std::uint32_t>(from_little_endian(bytes, 4)) : 0;
    return *this;
}

PStream& PStream::operator>>(double& value)
{
    unsigned char bytes[8];
    value = take(bytes, 8) ? std::bit_cast<double>(from_little_endian(bytes, 8)) : 0.0;
    return *this;
}
