#pragma once

#include <vector>

#include <QStringList>

namespace tirn {

/// A file name as a wildcard pattern: each blank stands for any character, "*" and "?" are wildcards, all
/// else means itself.
QString patternOfName(const QString& name);

/// The names of the files in the pattern's directory that match its file name, sorted by name.
QStringList expandPattern(const QString& pattern);
/// The same with the pattern's directory in front, in native separators.
QStringList expandPatternToPaths(const QString& pattern);
/// A name with the directory of `file` in front, in native separators.
QString besideFile(const QString& file, const QString& name);

/// The files that may be the channels of the same stack: those whose names differ from this one's in digits
/// among the last three characters of the base name. Sorted, with paths; the file itself is among them.
QStringList siblingChannelFiles(const QString& file);

/// The number of time points that `files` files give with a time step.
int steppedTimePoints(int files, int timeStep);
/// An element for each time point with one file for each channel. A channel's only file stands at each time
/// point. The lists are not empty; the first one's length is the number of files.
std::vector<QStringList> channelsByTime(const std::vector<QStringList>& channelFiles, int timeStep);
/// Every step-th file as an element of its own.
std::vector<QStringList> filesByTime(const QStringList& files, int timeStep);
/// Of groups of `channels` elements each step-th stays.
std::vector<QStringList> everyStepOfGroups(const std::vector<QStringList>& elements, int channels,
                                           int timeStep);

} // namespace tirn
