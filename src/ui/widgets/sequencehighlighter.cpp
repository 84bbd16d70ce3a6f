#include "ui/widgets/sequencehighlighter.h"

#include <algorithm>

namespace tirn {

namespace {

// White digits are readable on both, in a light and in a dark window.
const QColor kFree(0, 120, 0);
const QColor kChosen(200, 0, 0);

} // namespace

void SequenceHighlighter::setName(const QString& name)
{
    m_groups = digitGroups(name);
    m_fields = {};
    setCurrent(0);
}

void SequenceHighlighter::setCurrent(int group)
{
    m_current = std::min(std::max(0, group), static_cast<int>(m_groups.size()) - 1);
    rehighlight();
}

std::vector<int> SequenceHighlighter::fieldStarts() const
{
    std::vector<int> starts;
    for (const DigitGroup& group : m_groups)
        starts.push_back(group.start);
    return starts;
}

std::vector<int> SequenceHighlighter::fieldLengths() const
{
    std::vector<int> lengths;
    for (const DigitGroup& group : m_groups)
        lengths.push_back(group.length);
    return lengths;
}

int SequenceHighlighter::chosenCount() const
{
    const auto fields = {m_fields.time, m_fields.slice, m_fields.channel};
    return static_cast<int>(
        std::count_if(fields.begin(), fields.end(), [](int field) { return field >= 0; }));
}

bool SequenceHighlighter::isChosen(int group) const
{
    return group == m_fields.time || group == m_fields.slice || group == m_fields.channel;
}

void SequenceHighlighter::highlightBlock(const QString& text)
{
    for (int i = 0; i < static_cast<int>(m_groups.size()); ++i) {
        const DigitGroup& group = m_groups[static_cast<std::size_t>(i)];
        if (group.start + group.length > text.size())
            return;
        QTextCharFormat format;
        format.setForeground(Qt::white);
        format.setBackground(isChosen(i) ? kChosen : kFree);
        format.setFontUnderline(i == m_current);
        format.setFontWeight(i == m_current ? QFont::Bold : QFont::Normal);
        setFormat(group.start, group.length, format);
    }
}

} // namespace tirn
