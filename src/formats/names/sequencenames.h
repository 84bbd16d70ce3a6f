#pragma once

#include <vector>

#include <QStringList>

namespace tirn {

/// A run of digits in a file name.
struct DigitGroup
{
    int start = 0;
    int length = 0;

    bool operator==(const DigitGroup&) const = default;
};

/// Which group of a file name numbers what: the group's number from 0, or one of the two below.
struct SequenceFields
{
    static constexpr int kOpen = -1;
    static constexpr int kNone = -2;

    int time = kOpen;
    int slice = kOpen;
    int channel = kOpen;

    bool operator==(const SequenceFields&) const = default;
};

/// The groups from the left.
std::vector<DigitGroup> digitGroups(const QString& name);
/// The number of the group that holds the character, -1 for none.
int groupAt(const std::vector<DigitGroup>& groups, int position);
/// The name with "?" for each character of a group.
QString wildcarded(QString name, const DigitGroup& group);
/// The name with "?" for the characters of all chosen groups.
QString sequencePattern(const QString& name, const std::vector<DigitGroup>& groups,
                        const SequenceFields& fields);

/// The files of a sequence, one list of slices for each channel of each time point, at
/// channel + channels * time.
struct SequenceStacks
{
    std::vector<QStringList> lists;
    int channels = 1;
    /// The first time point that has another number of channels than the first, counted from 0; -1 for none.
    int unevenTimePoint = -1;
    /// What that one has.
    int unevenChannels = 0;

    int timePoints() const { return static_cast<int>(lists.size()) / channels; }
};

/// Sorts the names of a sequence into stacks. The groups are those of the name that the fields were chosen
/// in. Names without digits where slices and channels are numbered belong to no stack.
SequenceStacks groupSequence(const QStringList& names, const std::vector<DigitGroup>& groups,
                             const SequenceFields& fields);

} // namespace tirn
