#pragma once

#include <memory>
#include <vector>

#include "base/jobresult.h"
#include "volume/voxelarray.h"

namespace tirn {

/// What is done to the voxels of a volume.
struct VolumeEdit
{
    VoxelChange apply;
    /// Undoes `apply`; null where only the old voxels help.
    std::function<void(ImageFile& image)> takeBack;
    /// Remembered by the volume, and part of its voxels from then on whenever they are read again.
    DataTransforms toggles;
    /// The numbers of the images to change; empty for all.
    std::vector<int> images;
};

VolumeEdit flipEdit(char axis);
VolumeEdit invertEdit();

struct EditServices
{
    /// Counts 200 for each image, half of it for its textures.
    Progress progress;
    /// Lets textures, and what is read while drawing, change while nobody draws.
    TextureGate gate;
};

/// An edit that was done, and all that takes it back: the old voxels lie in a file, where there is room.
class AppliedEdit
{
public:
    virtual ~AppliedEdit() = default;
    /// Once, while the volume is as the edit left it.
    virtual JobResult takeBack(const TextureGate& gate) = 0;
};

/// Changes the voxels of one image after the other; each time its statistics are made anew and copied to the
/// channels, and its textures are replaced.
///
/// What was not done to the end is taken back: voxels, statistics, transforms and textures are as they were.
/// To that end an edit without a `takeBack` keeps the old voxels of the image at hand in memory and those of
/// the images before it in a file; of images whose voxels were let go nothing is kept, they are read again.
///
/// With `applied` an edit that was done can be taken back later.
JobResult applyEdit(VoxelArray& array, const VolumeEdit& edit, const EditServices& services = {},
                    std::unique_ptr<AppliedEdit>* applied = nullptr);

} // namespace tirn
