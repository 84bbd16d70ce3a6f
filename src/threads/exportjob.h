#pragma once

#include <map>
#include <memory>
#include <vector>

#include <QStringList>

#include "base/jobresult.h"
#include "volume/voxelarray.h"

namespace tirn {

/// What an export does to the voxels.
enum class ExportMode {
    Core = 0,       ///< keeps what lies in the cut box
    ZCorrected = 1, ///< multiplies by the depth curves
    AllChanges = 2, ///< both
};

/// What an export works on, so that the volume may be turned, cut and coloured meanwhile. Its images must
/// stay as they are.
struct ExportJob
{
    /// As it was chosen; a series is written to numbered files.
    QString fileName;
    ExportMode mode = ExportMode::Core;
    /// The images of each time point: one, or one a channel.
    std::vector<std::vector<std::shared_ptr<ImageFile>>> timePoints;
    /// Images have to be read again and transformed.
    bool isOnDisk = false;
    DataTransforms transforms;
    /// What filters did to what is shown of images on disk.
    std::map<const ImageFile*, VoxelChange> shownChanges;
    /// In voxels of the images.
    CutBox box;
    /// One a channel, one multiplier a layer.
    std::vector<std::vector<double>> curves;
    /// The voxel size in microns.
    double dimX = -1;
    double dimY = -1;
    double dimZ = -1;

    int channels() const { return static_cast<int>(curves.size()); }
};

ExportJob exportJob(const VoxelArray& array, ExportMode mode, const QString& fileName);

/// The names of all files: one list a time point, numbered before the ending when there are several; in a
/// list one name, or for a Bio-Rad file one a channel.
std::vector<QStringList> exportFileNames(const QString& fileName, int timePoints, int channels);

/// Writes the files. They are made in a folder beside, and take their names when all of them are complete; on
/// failure and when cancelled whatever was there is as it was.
JobResult runExportJob(const ExportJob& job, const Progress& progress);

} // namespace tirn
