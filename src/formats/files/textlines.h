#pragma once

#include <cstdint>

#include <QByteArray>
#include <QFile>
#include <QString>

namespace tirn {

/// Lines of a text file that may be no text at all: they end at the first line of more than 64 KB, at a zero
/// byte (outside of UTF-16), and at 4 MB or 65536 lines. A byte-order mark says UTF-16 or UTF-8; without one
/// the text is UTF-8, or Latin 1 where it is not valid.
class TextLines
{
public:
    /// `file` is open for reading, at its start, and outlives this.
    explicit TextLines(QFile& file);

    /// False at the end. Line ends are cut off.
    bool next(QString& line);

private:
    static constexpr int kLongestLine = 65536;
    static constexpr std::int64_t kLongestText = std::int64_t{4} << 20;
    static constexpr int kMostLines = 65536;

    enum class Encoding { Bytes, Utf16Little, Utf16Big };

    int characterBytes() const { return m_encoding == Encoding::Bytes ? 1 : 2; }
    bool isNewline(int at) const;
    int newline();
    QString decoded(const QByteArray& bytes) const;

    QFile& m_file;
    Encoding m_encoding = Encoding::Bytes;
    QByteArray m_buffer;
    int m_position = 0;
    std::int64_t m_taken = 0;
    int m_lines = 0;
    bool m_ended = false;
};

} // namespace tirn
