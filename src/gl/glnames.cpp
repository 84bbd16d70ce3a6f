#include "gl/glnames.h"

#include <algorithm>
#include <atomic>
#include <utility>

#include "gl/gltable.h"

namespace tirn {

namespace {

std::atomic<int> liveTextures = 0;
std::atomic<int> liveLists = 0;
std::atomic<int> livePrograms = 0;
std::atomic<int> liveBuffers = 0;

template <class Entry>
GLuint makeName(Entry generate, std::atomic<int>& live)
{
    GLuint name = 0;
    if (generate != nullptr)
        generate(1, &name);
    live += name != 0;
    return name;
}

template <class Entry>
void removeName(Entry remove, std::atomic<int>& live, GLuint name)
{
    remove(1, &name);
    --live;
}

} // namespace

LiveGlNames liveGlNames() { return {liveTextures, liveLists, livePrograms, liveBuffers}; }

GLuint makeSharedTexture() { return makeName(gl().GenTextures, liveTextures); }

void deleteSharedTexture(GLuint name) { removeName(gl().DeleteTextures, liveTextures, name); }

GLuint makeSharedList()
{
    const GLuint name = gl().GenLists(1);
    liveLists += name != 0;
    return name;
}

void deleteSharedList(GLuint name)
{
    gl().DeleteLists(name, 1);
    --liveLists;
}

TextureNames::TextureNames(TextureNames&& other) noexcept : m_names(std::exchange(other.m_names, {})) {}

TextureNames& TextureNames::operator=(TextureNames&& other) noexcept
{
    if (this != &other) {
        clear();
        m_names = std::exchange(other.m_names, {});
    }
    return *this;
}

GLuint TextureNames::add()
{
    m_names.push_back(makeSharedTexture());
    return m_names.back();
}

void TextureNames::clear()
{
    if (m_names.empty())
        return;
    liveTextures -= static_cast<int>(
        std::count_if(m_names.begin(), m_names.end(), [](GLuint name) { return name != 0; }));
    const std::vector<GLuint> newestFirst(m_names.rbegin(), m_names.rend());
    gl().DeleteTextures(static_cast<GLsizei>(newestFirst.size()), newestFirst.data());
    m_names.clear();
}

ListNames::ListNames(int count)
{
    if (count < 1)
        return;
    m_first = gl().GenLists(count);
    m_count = m_first != 0 ? count : 0;
    liveLists += m_count;
}

ListNames::ListNames(ListNames&& other) noexcept
    : m_first(std::exchange(other.m_first, 0)), m_count(std::exchange(other.m_count, 0))
{}

ListNames& ListNames::operator=(ListNames&& other) noexcept
{
    if (this != &other) {
        clear();
        m_first = std::exchange(other.m_first, 0);
        m_count = std::exchange(other.m_count, 0);
    }
    return *this;
}

void ListNames::clear()
{
    if (m_count == 0)
        return;
    gl().DeleteLists(m_first, m_count);
    liveLists -= m_count;
    m_first = 0;
    m_count = 0;
}

GLuint ProgramKind::make() { return makeName(gl().GenProgramsARB, livePrograms); }

void ProgramKind::remove(GLuint name) { removeName(gl().DeleteProgramsARB, livePrograms, name); }

GLuint FrameBufferKind::make() { return makeName(gl().GenFramebuffers, liveBuffers); }

void FrameBufferKind::remove(GLuint name) { removeName(gl().DeleteFramebuffers, liveBuffers, name); }

GLuint RenderBufferKind::make() { return makeName(gl().GenRenderbuffers, liveBuffers); }

void RenderBufferKind::remove(GLuint name) { removeName(gl().DeleteRenderbuffers, liveBuffers, name); }

} // namespace tirn
