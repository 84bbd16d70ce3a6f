#include "formats/files/textlines.h"

#include <algorithm>

namespace tirn {

namespace {
constexpr int kPiece = 16384;
}

TextLines::TextLines(QFile& file) : m_file(file), m_buffer(file.read(kPiece))
{
    if (m_buffer.startsWith("\xff\xfe"))
        m_encoding = Encoding::Utf16Little;
    else if (m_buffer.startsWith("\xfe\xff"))
        m_encoding = Encoding::Utf16Big;
    if (m_encoding != Encoding::Bytes)
        m_position = 2;
    else if (m_buffer.startsWith("\xef\xbb\xbf"))
        m_position = 3;
}

bool TextLines::isNewline(int at) const
{
    switch (m_encoding) {
    case Encoding::Bytes:
        return m_buffer[at] == '\n';
    case Encoding::Utf16Little:
        return m_buffer[at] == '\n' && m_buffer[at + 1] == '\0';
    case Encoding::Utf16Big:
        return m_buffer[at] == '\0' && m_buffer[at + 1] == '\n';
    }
    return false;
}

/// The place of the next newline in the buffer, which grows for it; the buffer's end at the end of the file,
/// -1 for a line that is too long.
int TextLines::newline()
{
    int at = m_position;
    for (;;) {
        const int end = static_cast<int>(m_buffer.size()) - characterBytes();
        for (; at <= end; at += characterBytes()) {
            if (isNewline(at))
                return at;
        }
        if (m_buffer.size() - m_position > kLongestLine)
            return -1;
        const QByteArray piece = m_file.read(kPiece);
        if (piece.isEmpty())
            return static_cast<int>(m_buffer.size());
        m_buffer.remove(0, m_position);
        at -= m_position;
        m_position = 0;
        m_buffer += piece;
    }
}

QString TextLines::decoded(const QByteArray& bytes) const
{
    if (m_encoding == Encoding::Bytes) {
        const QString text = QString::fromUtf8(bytes);
        return text.contains(QChar::ReplacementCharacter) ? QString::fromLatin1(bytes) : text;
    }
    const int high = m_encoding == Encoding::Utf16Big ? 0 : 1;
    QString text;
    for (int i = 0; i + 1 < bytes.size(); i += 2) {
        const auto first = static_cast<unsigned char>(bytes[i + high]);
        const auto second = static_cast<unsigned char>(bytes[i + 1 - high]);
        text += QChar(static_cast<ushort>(first << 8 | second));
    }
    return text;
}

bool TextLines::next(QString& line)
{
    if (m_ended || m_lines == kMostLines)
        return false;
    ++m_lines;
    const int end = newline();
    const int length = end - m_position;
    m_ended = true;
    if (end < 0 || length > kLongestLine || (end == m_buffer.size() && length <= 0))
        return false;
    const QByteArray bytes = m_buffer.mid(m_position, length);
    m_position = std::min(end + characterBytes(), static_cast<int>(m_buffer.size()));
    m_taken += length + characterBytes();
    if (m_taken > kLongestText || (m_encoding == Encoding::Bytes && bytes.contains('\0')))
        return false;
    line = decoded(bytes);
    if (line.endsWith('\r'))
        line.chop(1);
    m_ended = false;
    return true;
}

} // namespace tirn
