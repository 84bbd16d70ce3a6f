// Encoding: from the samples of the images to textures, quads and the bounding box.

#include <algorithm>

#include <QTime>

#include "base/checkedsize.h"
#include "base/log.h"
#include "base/stopwatch.h"
#include "gl/glstate.h"
#include "gl/texturemaps.h"
#include "gl/texturesinks.h"
#include "image/voxelallocation.h"
#include "volume/voxelarray.h"

namespace tirn {

namespace {

constexpr GLenum kRectangle = GL_TEXTURE_RECTANGLE_NV;
const char* const kNoSliceMemory = "Could not allocate memory for slice";

/// One progress report a step, in percent of the whole.
class StepCounter
{
public:
    StepCounter(const Progress& progress, std::int64_t total) : m_progress(progress), m_total(total) {}
    void step()
    {
        ++m_done;
        m_progress({}, static_cast<int>(m_done * 100 / std::max<std::int64_t>(1, m_total)), -1);
    }

private:
    const Progress& m_progress;
    std::int64_t m_total;
    std::int64_t m_done = 0;
};

void emitVertex(const QuadVertex& v, bool is3D, RenderThreadKind kind)
{
    if (usesFragmentPrograms(kind)) {
        if (is3D)
            gl().MultiTexCoord3fARB(GL_TEXTURE0_ARB, v.s, v.t, v.r);
        else
            gl().MultiTexCoord2fARB(GL_TEXTURE0_ARB, v.s, v.t);
    } else if (is3D) {
        gl().TexCoord3f(v.s, v.t, v.r);
    } else {
        gl().TexCoord2f(v.s, v.t);
    }
    gl().Vertex3f(v.x, v.y, v.z);
}

/// False, with a warning, when the entry that quads of this kind need is missing.
bool hasQuadEntries(bool is3D, RenderThreadKind kind)
{
    if (!usesFragmentPrograms(kind))
        return true;
    if (is3D && gl().MultiTexCoord3fARB == nullptr) {
        logWarning("glMultiTexCoord3fARB is NULL");
        return false;
    }
    if (!is3D && gl().MultiTexCoord2fARB == nullptr) {
        logWarning("glMultiTexCoord2fARB is NULL");
        return false;
    }
    return true;
}

void outline(std::initializer_list<std::array<float, 3>> corners)
{
    const PrimitiveScope loop(GL_LINE_LOOP);
    for (const auto& corner : corners)
        gl().Vertex3f(corner[0], corner[1], corner[2]);
}

VoxelBuffer sliceBuffer(std::initializer_list<std::int64_t> factors)
{
    return allocateVoxels(checkedProduct(factors), kNoSliceMemory);
}

/// Each 16-bit sample followed by a zero.
std::vector<std::uint16_t> withZeroes(const std::uint16_t* samples, std::size_t count)
{
    std::vector<std::uint16_t> pairs(2 * count, 0);
    for (std::size_t i = 0; i < count; ++i)
        pairs[2 * i] = samples[i];
    return pairs;
}

/// Says that a quad is no display list: each group in words of its own, that of X as a warning.
void logNoList(const StackGeometry& geometry, int quad, int list)
{
    if (quad < geometry.yGroup())
        logDebug("AHHH! %d", list);
    else if (quad < geometry.yGroup() + geometry.xGroup())
        logWarning("AHHH %d\n", list);
    else
        logDebug("AHHH %d", list);
}

} // namespace

/// What one run of the encoder works on.
struct VoxelArray::EncodeJob
{
    SampleView view;
    int imageChannels = 1;
    GLenum format = 0;
    /// The next texture to overwrite; none when new ones are made.
    std::size_t* reuse = nullptr;
    const Progress& progress;
    const TextureGate& gate;

    /// Only what replaces textures can be left in the middle; its caller puts the rest right.
    bool isStopped() const { return reuse != nullptr && progress.cancelled(); }
    void change(const std::function<void()>& textures) const { gate ? gate(textures) : textures(); }
};

GLenum VoxelArray::internalFormat() const
{
    if (m_options.kind == RenderThreadKind::Paletted)
        return GL_COLOR_INDEX8_EXT;
    if (!usesFragmentPrograms(m_options.kind))
        return 0;
    return m_stack.hasWords() ? GL_LUMINANCE16 : GL_LUMINANCE8;
}

bool VoxelArray::prepareEncode(GLenum target, const char* badStack)
{
    // One voxel on an axis leaves a 3D texture's coordinate without a meaning.
    const bool flat = m_stack.x == 1 || m_stack.y == 1 || m_stack.z == 1;
    m_textureTarget = target == GL_TEXTURE_3D && flat ? GL_TEXTURE_2D : target;
    if (m_stack.x < 1 || m_stack.y < 1 || m_stack.z < 1 || m_stack.bitDepth < 1) {
        logWarning("%s", badStack);
        return false;
    }
    return true;
}

bool VoxelArray::alreadyEncoded() const
{
    // In several blocks a part of the images may happen to have made as many textures.
    if (m_encodedImages < static_cast<int>(m_images.size()))
        return false;
    const std::int64_t slices = std::int64_t{m_stack.x} + m_stack.y + m_stack.z;
    const auto textures = static_cast<std::int64_t>(m_textures.size());
    if (textures == 0 || textures != slices * channelCount() * m_timePoints)
        return false;
    logWarning("Warning: array already encoded the stack.  Nothing to do.");
    return true;
}

void VoxelArray::beginEncoding(int finalZ)
{
    const int limit = m_textureTarget == GL_TEXTURE_3D ? m_options.texLimit3D : m_options.texLimit2D;
    const int quadsDepth = m_quads.empty() ? -1 : m_geometry.finalZ;
    m_geometry = StackGeometry::of(m_stack.x, m_stack.y, m_stack.z, limit);
    m_geometry.finalZ = quadsDepth;
    m_bricks.clear();
    for (int bz = 0; bz < m_geometry.zBlocks; ++bz) {
        for (int by = 0; by < m_geometry.yBlocks; ++by) {
            for (int bx = 0; bx < m_geometry.xBlocks; ++bx) {
                m_bricks.push_back(std::make_unique<Brick>(bx, by, bz, m_geometry.xBlocks, m_geometry.yBlocks,
                                                           m_geometry.zBlocks));
            }
        }
    }
    if (m_quads.empty())
        makeQuads(finalZ);
    makeBoxLists();
    m_textures.clear();
}

void VoxelArray::makeQuads(int finalZ)
{
    const bool is3D = m_textureTarget == GL_TEXTURE_3D;
    logDebug(is3D ? "Making 3D quads" : "Making 2D quads");
    StackGeometry& g = m_geometry;
    if (!g.isValid()) {
        logWarning("Impossible stack dimensions! Aborting!");
        return;
    }
    if (!hasQuadEntries(is3D, m_options.kind))
        return;
    if (is3D) {
        g.finalZ = finalZ > g.z ? finalZ : -1;
        logDebug("x %d y %d final_z %d powz %d", g.x, g.y, g.finalZ, g.powZ);
    } else {
        logDebug("x %d %d y %d %d z %d %d", g.x, g.powX, g.y, g.powY, g.z, g.powZ);
    }
    // The 2D limit stands in this line for both targets.
    logDebug("xblocks %d yblock %d zblocks %d texlimit %d", g.xBlocks, g.yBlocks, g.zBlocks,
             m_options.texLimit2D);
    const std::vector<Quad> quads = is3D ? quads3D(g) : quads2D(g);
    m_quads = ListNames(static_cast<int>(quads.size()));
    for (std::size_t q = 0; q < m_quads.size(); ++q) {
        {
            const ListScope list(m_quads[q]);
            gl().Color4f(1, 1, 1, 1);
            const PrimitiveScope primitive(GL_QUADS);
            for (const QuadVertex& vertex : quads[q])
                emitVertex(vertex, is3D, m_options.kind);
        }
        if (gl().IsList(m_quads[q]) == GL_FALSE)
            logNoList(g, static_cast<int>(q), static_cast<int>(m_quads[q]));
    }
    logDebug(is3D ? "Done making %d 3D quads" : "Done making %d 2D quads", static_cast<int>(m_quads.size()));
}

void VoxelArray::makeBoxLists()
{
    const int m = m_geometry.maxPow();
    const BoxEdges x = boxEdges(m_stack.x, m);
    const BoxEdges y = boxEdges(m_stack.y, m);
    const BoxEdges z = boxEdges(m_stack.z, m);
    m_boxLists = ListNames(BoxListCount);
    if (m_boxLists.empty())
        return;
    const auto front = [&] {
        outline({{x.low, y.low, z.high},
                 {x.high, y.low, z.high},
                 {x.high, y.high, z.high},
                 {x.low, y.high, z.high}});
    };
    const auto back = [&] {
        outline(
            {{x.low, y.low, z.low}, {x.high, y.low, z.low}, {x.high, y.high, z.low}, {x.low, y.high, z.low}});
    };
    {
        const ListScope list(m_boxLists[WholeBox]);
        front();
        back();
        const PrimitiveScope lines(GL_LINES);
        for (const float cornerX : {x.low, x.high}) {
            for (const float cornerY : {y.low, y.high}) {
                gl().Vertex3f(cornerX, cornerY, z.low);
                gl().Vertex3f(cornerX, cornerY, z.high);
            }
        }
    }
    const auto faceList = [&](BoxList which, const std::function<void()>& draw) {
        const ListScope list(m_boxLists[which]);
        gl().LineWidth(1);
        draw();
    };
    faceList(FrontFace, front);
    faceList(BackFace, back);
    for (const auto& [which, edge] : {std::pair(LeftFace, x.low), std::pair(RightFace, x.high)}) {
        faceList(which, [&, cornerX = edge] {
            outline({{cornerX, y.low, z.low},
                     {cornerX, y.high, z.low},
                     {cornerX, y.high, z.high},
                     {cornerX, y.low, z.high}});
        });
    }
    for (const auto& [which, edge] : {std::pair(BottomFace, y.low), std::pair(TopFace, y.high)}) {
        faceList(which, [&, cornerY = edge] {
            outline({{x.low, cornerY, z.low},
                     {x.high, cornerY, z.low},
                     {x.high, cornerY, z.high},
                     {x.low, cornerY, z.high}});
        });
    }
}

void VoxelArray::takeTimeStamp(const ImageFile& image)
{
    const QDateTime& stamp = image.attributes().timestamp;
    const QString label = stamp.toString("hh:mm:ss");
    logDebug("timing info %s", qPrintable(label));
    if (!stamp.isValid())
        return;
    m_timeStamps.push_back(stamp);
    if (m_encodedImages < m_timeLabels.size())
        m_timeLabels[m_encodedImages] = label;
    logDebug("timing info %s", qPrintable(label));
}

bool VoxelArray::encode(GLenum target, int finalZ, const Progress& progress)
{
    logDebug("better encode");
    if (!prepareEncode(target, "dimensions not valid or stack not read."))
        return false;
    if (alreadyEncoded())
        return true;
    if (m_encodedImages == 0)
        beginEncoding(finalZ);
    if (m_encodedImages >= static_cast<int>(m_images.size()))
        return false;
    ImageFile& image = *m_images[static_cast<std::size_t>(m_encodedImages)];
    takeTimeStamp(image);
    if (encodeImage(image, nullptr, progress, {}) == Encoding::UnknownDepth)
        logWarning("Error: I do not know how to encode %d bits.", m_stack.bitDepth);
    letVoxelsGo(image);
    ++m_encodedImages;
    if (m_encodedImages == static_cast<int>(m_images.size()))
        finishEncoding();
    return true;
}

void VoxelArray::finishEncoding()
{
    if (!m_channels.empty() && m_channels.front().stats.histogram.empty())
        copyStatistics();
    for (Channel& channel : m_channels)
        channel.zCurve.setBlocks(m_textureTarget == GL_TEXTURE_3D ? m_geometry.zBlocks : 1);
    resetCut();
}

void VoxelArray::keepImages(int count)
{
    if (count < 1 || count > static_cast<int>(m_images.size()))
        return;
    m_images.resize(static_cast<std::size_t>(count));
    m_timeStamps.resize(std::min(m_timeStamps.size(), m_images.size()));
    while (m_timeLabels.size() > count)
        m_timeLabels.removeLast();
    m_timePoints = count;
    m_encodedImages = count;
    ++m_voxelRevision;
    finishEncoding();
}

VoxelArray::Encoding VoxelArray::encodeImage(ImageFile& image, std::size_t* reuseFrom,
                                             const Progress& progress, const TextureGate& gate)
{
    const int bits = m_stack.bitDepth;
    if (bits != 8 && bits != 12 && bits != 16)
        return Encoding::UnknownDepth;
    if (!image.isLoaded() && !image.reRead())
        return Encoding::Done;
    EncodeJob job{{image.stackData(), bits == 8 ? 1 : 2, image.attributes().channels, 0},
                  image.attributes().channels,
                  internalFormat(),
                  reuseFrom,
                  progress,
                  gate};
    // Every image of an array must have the size of the first: the quads are shared.
    const ImageAttributes& size = image.attributes();
    if (size.x != m_stack.x || size.y != m_stack.y || size.z != m_stack.z || size.bitDepth != bits) {
        logWarning("%s differs in size from the first file of its stack.", qPrintable(image.fileName()));
        return Encoding::Done;
    }
    const StackGeometry& g = m_geometry;
    logDebug("x %d y %d z %d", g.x, g.y, g.z);
    logDebug("xpad %d ypad %d zpad %d", g.padX(), g.padY(), g.padZ());
    try {
        if (m_textureTarget == GL_TEXTURE_3D)
            encode3D(job);
        else
            encode2D(job);
    } catch (const std::bad_alloc&) {
        logWarning("%s", kNoSliceMemory);
        return Encoding::Stopped;
    }
    return job.isStopped() ? Encoding::Stopped : Encoding::Done;
}

void VoxelArray::putTexture(EncodeJob& job, TextureSize size, const void* texels)
{
    const bool words = job.view.bytesPerSample == 2;
    TextureCreator creator = words ? TextureCreator::Map2D16 : TextureCreator::Map2D8;
    if (m_textureTarget == GL_TEXTURE_3D)
        creator = words ? TextureCreator::Map3D16 : TextureCreator::Map3D8;
    else if (m_textureTarget == kRectangle)
        creator = TextureCreator::Rectangle2D8;
    const bool isNew = job.reuse == nullptr;
    GLuint name = 0;
    if (isNew)
        name = m_textures.add();
    else if (*job.reuse < m_textures.size())
        name = m_textures[(*job.reuse)++];
    if (name == 0) {
        logWarning("Error: failed to generate texture");
        return;
    }
    ++m_voxelRevision;
    if (job.format == GL_HILO16_NV) {
        const auto pairs =
            withZeroes(static_cast<const std::uint16_t*>(texels), static_cast<std::size_t>(size.width) *
                                                                      static_cast<std::size_t>(size.height) *
                                                                      static_cast<std::size_t>(size.depth));
        fillTexture(creator, name, isNew, job.format, size, pairs.data());
        return;
    }
    fillTexture(creator, name, isNew, job.format, size, texels);
}

void VoxelArray::encode3D(EncodeJob& job)
{
    const StackGeometry& g = m_geometry;
    const int bytes = job.view.bytesPerSample;
    const std::int64_t layerBytes = std::int64_t{g.blockX()} * g.blockY() * bytes;
    StepCounter steps(job.progress, std::int64_t{job.imageChannels} * g.powZ * g.blocks());
    VoxelBuffer buffer = sliceBuffer({layerBytes, g.blockZ()});
    for (job.view.channel = 0; job.view.channel < job.imageChannels; ++job.view.channel) {
        for (int block = 0; block < g.blocks(); ++block) {
            const int bx = block % g.xBlocks;
            const int by = block / g.xBlocks % g.yBlocks;
            const int bz = block / (g.xBlocks * g.yBlocks);
            Stopwatch timer;
            for (int layer = 0; layer < g.blockZ(); ++layer) {
                steps.step();
                fillBlockLayer(g, job.view, bx, by, bz, layer, buffer.data() + layer * layerBytes);
            }
            m_encodeTimes.fill += timer.restart();
            if (job.isStopped())
                return;
            job.change([&] { putTexture(job, {g.blockX(), g.blockY(), g.blockZ()}, buffer.data()); });
            m_encodeTimes.upload += timer.seconds();
        }
    }
    logDebug(bytes == 1 ? "Done encoding 8bit 3D" : "Done encoding 16bit 3D");
}

void VoxelArray::encode2D(EncodeJob& job)
{
    struct PassRow
    {
        SlicePass pass;
        const char* wordsDone;
    };
    static constexpr PassRow passes[] = {{SlicePass::Y, "made it though zx"},
                                         {SlicePass::X, "made it though yz"},
                                         {SlicePass::Z, "made it though xy"}};
    const StackGeometry& g = m_geometry;
    const int bytes = job.view.bytesPerSample;
    StepCounter steps(job.progress, (std::int64_t{g.x} + g.y + g.z) * job.imageChannels);
    for (job.view.channel = 0; job.view.channel < job.imageChannels; ++job.view.channel) {
        for (const PassRow& row : passes) {
            const PassLayout layout = passLayout(g, row.pass);
            const int batch = planesPerBatch(g, row.pass, bytes);
            const auto textureBytes = static_cast<std::int64_t>(layout.texels()) * bytes;
            VoxelBuffer buffer =
                sliceBuffer({static_cast<std::int64_t>(layout.texelsPerPlane()), bytes, batch});
            for (int first = 0; first < layout.planes; first += batch) {
                const int count = std::min(batch, layout.planes - first);
                Stopwatch timer;
                fillPlanes(g, row.pass, job.view, first, count, buffer.data());
                m_encodeTimes.fill += timer.restart();
                if (job.isStopped())
                    return;
                job.change([&] {
                    const std::byte* texels = buffer.data();
                    for (int plane = 0; plane < count; ++plane) {
                        for (int block = 0; block < layout.blocksPerPlane; ++block, texels += textureBytes)
                            putTexture(job, {layout.width, layout.height, 1}, texels);
                        steps.step();
                    }
                });
                m_encodeTimes.upload += timer.seconds();
            }
            if (bytes == 2) {
                logDebug("%s", row.wordsDone);
                logDebug("x %d y %d z %d stacksize %d", g.x, g.y, g.z, static_cast<int>(m_textures.size()));
            }
        }
    }
    logDebug(bytes == 1 ? "*** Done encoding 8bit 2D ***" : "*** Done encoding 16bit 2D ***");
}

bool VoxelArray::loadVoxels(int i, const Progress& progress)
{
    if (i < 0 || i >= static_cast<int>(m_images.size()))
        return false;
    ImageFile& image = *m_images[static_cast<std::size_t>(i)];
    if (image.isLoaded())
        return true;
    if (!image.reRead())
        return false;
    m_transforms.applyTo(image, {progress.report, nullptr});
    return true;
}

/// Only where memory is conserved; the statistics stay, and are made before it is too late.
void VoxelArray::letVoxelsGo(ImageFile& image)
{
    if (!m_options.conserveMemory)
        return;
    if (image.isLoaded())
        image.stats(0);
    image.freeStack();
}

bool VoxelArray::reencode(int i, const Progress& progress, const TextureGate& gate)
{
    if (!loadVoxels(i, progress))
        return false;
    ImageFile& image = *m_images[static_cast<std::size_t>(i)];
    // Each image holds an equal share of the textures, so that every time point replaces its own.
    std::size_t next = m_textures.size() / m_images.size() * static_cast<std::size_t>(i);
    const Encoding encoding = encodeImage(image, &next, progress, gate);
    if (encoding == Encoding::UnknownDepth)
        logWarning("Error: I do not know how to reencode %d bits.", m_stack.bitDepth);
    letVoxelsGo(image);
    const std::scoped_lock lock(m_voxelMutex);
    m_imageRevisions.resize(m_images.size());
    ++m_imageRevisions[static_cast<std::size_t>(i)];
    return encoding != Encoding::Stopped;
}

bool VoxelArray::takeOwnEncoding(ImageFile& image)
{
    GlTextureSink sink;
    const std::size_t before = m_textures.size();
    for (const unsigned name :
         image.encode(static_cast<int>(m_textureTarget), static_cast<int>(internalFormat()), sink))
        m_textures.adopt(name);
    ++m_voxelRevision;
    if (m_textures.size() > before)
        return true;
    m_textures.clear();
    logWarning("failed to generate texmaps");
    return false;
}

bool VoxelArray::encodeAll(GLenum target, int finalZ)
{
    logDebug("started encode");
    if (!prepareEncode(target, "dimensions not valid or stack not read."))
        return false;
    if (alreadyEncoded())
        return true;
    beginEncoding(finalZ);
    for (const auto& image : m_images) {
        if (!takeOwnEncoding(*image))
            return false;
        if (!m_channels.empty() && m_channels.front().stats.histogram.empty())
            copyStatistics();
        letVoxelsGo(*image);
        ++m_encodedImages;
    }
    resetCut();
    return true;
}

bool VoxelArray::encodeNext(GLenum target, int finalZ)
{
    logDebug("encoding..........%d", m_encodedImages);
    if (!prepareEncode(target, "Error: dimensions not valid or stack not read."))
        return false;
    if (!m_channels.empty() && m_channels.front().stats.histogram.empty()) {
        copyStatistics();
        logDebug("Done generating statistics");
    }
    if (m_encodedImages == 0) {
        beginEncoding(finalZ);
        resetCut();
    }
    if (m_encodedImages < static_cast<int>(m_images.size())) {
        ImageFile& image = *m_images[static_cast<std::size_t>(m_encodedImages)];
        if (!takeOwnEncoding(image))
            return false;
        if (m_options.conserveMemory)
            logDebug("Conserving memory");
        letVoxelsGo(image);
        ++m_encodedImages;
    }
    logDebug("*** stack size %d", static_cast<int>(m_textures.size()));
    return true;
}

} // namespace tirn
