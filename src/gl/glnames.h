#pragma once

#include <utility>
#include <vector>

#include <qopengl.h>

namespace tirn {

/// How many GL names the owners below hold in the whole process.
struct LiveGlNames
{
    int textures = 0;
    int lists = 0;
    int programs = 0;
    /// Frame buffer objects and their buffers.
    int buffers = 0;

    bool operator==(const LiveGlNames&) const = default;
};
LiveGlNames liveGlNames();

/// Single names for tables that core objects own through a sink; each must be given back to the matching
/// function.
GLuint makeSharedTexture();
void deleteSharedTexture(GLuint name);
GLuint makeSharedList();
void deleteSharedList(GLuint name);

/// Owns texture names. Making and deleting need a current context of the names' share group.
class TextureNames
{
public:
    TextureNames() = default;
    TextureNames(TextureNames&& other) noexcept;
    TextureNames& operator=(TextureNames&& other) noexcept;
    ~TextureNames() { clear(); }

    /// A new name at the end; 0 stands there when the driver gave none.
    GLuint add();
    /// Takes over a name that makeSharedTexture gave.
    void adopt(GLuint name) { m_names.push_back(name); }
    /// Deletes all names, newest first, in one call.
    void clear();

    GLuint operator[](std::size_t index) const { return m_names[index]; }
    std::size_t size() const { return m_names.size(); }
    bool empty() const { return m_names.empty(); }

private:
    std::vector<GLuint> m_names;
};

/// Owns a run of consecutive display list ids.
class ListNames
{
public:
    ListNames() = default;
    explicit ListNames(int count);
    ListNames(ListNames&& other) noexcept;
    ListNames& operator=(ListNames&& other) noexcept;
    ~ListNames() { clear(); }

    /// Deletes the whole run in one call.
    void clear();

    GLuint operator[](std::size_t index) const { return m_first + static_cast<GLuint>(index); }
    GLuint first() const { return m_first; }
    std::size_t size() const { return static_cast<std::size_t>(m_count); }
    bool empty() const { return m_count == 0; }

private:
    GLuint m_first = 0;
    int m_count = 0;
};

/// Owns one name of a kind; a kind makes and deletes its names and counts them.
template <class Kind>
class SingleName
{
public:
    SingleName() = default;
    SingleName(SingleName&& other) noexcept : m_id(std::exchange(other.m_id, 0)) {}
    SingleName& operator=(SingleName&& other) noexcept
    {
        if (this != &other) {
            clear();
            m_id = std::exchange(other.m_id, 0);
        }
        return *this;
    }
    ~SingleName() { clear(); }

    /// A new name in place of the old one; 0 when the driver gives none.
    GLuint generate()
    {
        clear();
        m_id = Kind::make();
        return m_id;
    }
    void clear()
    {
        if (m_id != 0)
            Kind::remove(std::exchange(m_id, 0));
    }
    GLuint id() const { return m_id; }

private:
    GLuint m_id = 0;
};

struct ProgramKind
{
    static GLuint make();
    static void remove(GLuint name);
};
struct FrameBufferKind
{
    static GLuint make();
    static void remove(GLuint name);
};
struct RenderBufferKind
{
    static GLuint make();
    static void remove(GLuint name);
};

/// A fragment program; a frame buffer object, which its own context alone knows; one of its buffers.
using ProgramName = SingleName<ProgramKind>;
using FrameBufferName = SingleName<FrameBufferKind>;
using RenderBufferName = SingleName<RenderBufferKind>;

} // namespace tirn
