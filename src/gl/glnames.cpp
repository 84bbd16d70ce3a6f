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

} // namespace

LiveGlNames liveGlNames() { return {liveTextures, liveLists, livePrograms}; }

GLuint makeSharedTexture()
{
    GLuint name = 0;
    gl().GenTextures(1, &name);
    liveTextures += name != 0;
    return name;
}

void deleteSharedTexture(GLuint name)
{
    gl().DeleteTextures(1, &name);
    --liveTextures;
}

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

ProgramName::ProgramName(ProgramName&& other) noexcept : m_id(std::exchange(other.m_id, 0)) {}

ProgramName& ProgramName::operator=(ProgramName&& other) noexcept
{
    if (this != &other) {
        clear();
        m_id = std::exchange(other.m_id, 0);
    }
    return *this;
}

GLuint ProgramName::generate()
{
    clear();
    gl().GenProgramsARB(1, &m_id);
    livePrograms += m_id != 0;
    return m_id;
}

void ProgramName::clear()
{
    if (m_id == 0)
        return;
    gl().DeleteProgramsARB(1, &m_id);
    --livePrograms;
    m_id = 0;
}

} // namespace tirn
