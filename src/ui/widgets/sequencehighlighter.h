#pragma once

#include <vector>

#include <QSyntaxHighlighter>

#include "formats/names/sequencenames.h"

namespace tirn {

/// Marks the groups of digits in a file name: green while they are free, red once they were chosen. The one
/// that the keyboard is at is underlined.
class SequenceHighlighter : public QSyntaxHighlighter
{
    Q_OBJECT

public:
    explicit SequenceHighlighter(QTextDocument* document) : QSyntaxHighlighter(document) {}

    /// The groups of a name, none chosen.
    void setName(const QString& name);
    const std::vector<DigitGroup>& groups() const { return m_groups; }
    SequenceFields& fields() { return m_fields; }
    const SequenceFields& fields() const { return m_fields; }
    /// Where each group begins, and how many digits it has.
    std::vector<int> fieldStarts() const;
    std::vector<int> fieldLengths() const;
    /// How many fields have a group.
    int chosenCount() const;
    bool isChosen(int group) const;
    /// The group that the keyboard is at; -1 without groups.
    int current() const { return m_current; }
    void setCurrent(int group);

protected:
    void highlightBlock(const QString& text) override;

private:
    std::vector<DigitGroup> m_groups;
    SequenceFields m_fields;
    int m_current = -1;
};

} // namespace tirn
