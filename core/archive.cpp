#include <qmml/platform.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace qmml {
namespace {

// From 0xFFFE on, 16 bits are no length: 0xFFFF announces 32 bits, and 0xFFFE other formats of the host's framework.
constexpr std::uint32_t s_long_length = 0xFF, s_first_reserved = 0xFFFE, s_longer_length = 0xFFFF;

void write_number(CArchiveSink& sink, std::uint32_t value, int bytes)
{
    unsigned char coded[4] = {};
    for (int i = 0; i < bytes; ++i)
        coded[i] = static_cast<unsigned char>(value >> (8 * i) & 0xFF);
    sink.Write(coded, static_cast<std::size_t>(bytes));
}

// Bytes may arrive in pieces. What arrived, at most what was wanted.
std::size_t read_bytes(CArchiveSink& sink, void* data, std::size_t wanted)
{
    std::size_t total = 0;
    while (total < wanted) {
        const std::size_t arrived = sink.Read(static_cast<char*>(data) + total, wanted - total);
        if (arrived == 0)
            break;
        total += std::min(arrived, wanted - total);
    }
    return total;
}

std::optional<std::uint32_t> read_number(CArchiveSink& sink, int bytes)
{
    unsigned char coded[4] = {};
    if (read_bytes(sink, coded, static_cast<std::size_t>(bytes)) != static_cast<std::size_t>(bytes))
        return std::nullopt;
    std::uint32_t value = 0;
    for (int i = 0; i < bytes; ++i)
        value |= std::uint32_t{coded[i]} << (8 * i);
    return value;
}

void write_length(CArchiveSink& sink, std::uint32_t length)
{
    if (length < s_long_length)
        return write_number(sink, length, 1);
    write_number(sink, s_long_length, 1);
    if (length < s_first_reserved)
        return write_number(sink, length, 2);
    write_number(sink, s_longer_length, 2);
    write_number(sink, length, 4);
}

std::optional<std::uint32_t> read_length(CArchiveSink& sink)
{
    auto length = read_number(sink, 1);
    if (length == s_long_length)
        length = read_number(sink, 2);
    else
        return length;
    if (length == s_longer_length)
        return read_number(sink, 4);
    return length == s_first_reserved ? std::nullopt : length;
}

// Takes the text in pieces, so that a false length costs no memory.
std::string read_text(CArchiveSink& sink)
{
    std::string text;
    const auto length = read_length(sink);
    if (!length)
        return text;
    char piece[4096];
    for (std::size_t missing = *length; missing > 0;) {
        const std::size_t wanted = std::min(missing, sizeof piece);
        if (read_bytes(sink, piece, wanted) != wanted)
            return std::string();
        text.append(piece, wanted);
        missing -= wanted;
    }
    return text;
}

} // namespace
} // namespace qmml

CArchive& operator<<(CArchive& archive, const CString& text)
{
    if (archive.IsStoring()) {
        const std::string& bytes = text.GetText();
        const auto length = static_cast<std::uint32_t>(std::min<std::size_t>(bytes.size(), UINT32_MAX));
        qmml::write_length(archive.GetSink(), length);
        if (length > 0)
            archive.GetSink().Write(bytes.data(), length);
    }
    return archive;
}

CArchive& operator>>(CArchive& archive, CString& text)
{
    text.Empty();
    if (!archive.IsStoring())
        text = CString(qmml::read_text(archive.GetSink()));
    return archive;
}
