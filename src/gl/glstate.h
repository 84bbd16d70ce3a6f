#pragma once

#include "gl/gltable.h"

namespace tirn {

/// Enables a capability while it lives, and disables it afterwards.
class EnabledScope
{
public:
    explicit EnabledScope(GLenum capability) : m_capability(capability) { gl().Enable(capability); }
    ~EnabledScope() { gl().Disable(m_capability); }
    EnabledScope(const EnabledScope&) = delete;
    EnabledScope& operator=(const EnabledScope&) = delete;

private:
    GLenum m_capability;
};

/// Saves the current matrix while it lives.
class MatrixScope
{
public:
    MatrixScope() { gl().PushMatrix(); }
    ~MatrixScope() { gl().PopMatrix(); }
    MatrixScope(const MatrixScope&) = delete;
    MatrixScope& operator=(const MatrixScope&) = delete;
};

/// Compiles what is called while it lives into a display list.
class ListScope
{
public:
    explicit ListScope(GLuint list) { gl().NewList(list, GL_COMPILE); }
    ~ListScope() { gl().EndList(); }
    ListScope(const ListScope&) = delete;
    ListScope& operator=(const ListScope&) = delete;
};

/// Draws one primitive while it lives.
class PrimitiveScope
{
public:
    explicit PrimitiveScope(GLenum mode) { gl().Begin(mode); }
    ~PrimitiveScope() { gl().End(); }
    PrimitiveScope(const PrimitiveScope&) = delete;
    PrimitiveScope& operator=(const PrimitiveScope&) = delete;
};

/// Reads all pending GL errors. If there are any, logs "LABEL: CODE" and "GL Error number: 0xCODE" for each
/// further one as one debug line. Returns the first code, 0 when there was none.
GLenum reportGlErrors(const char* label);

} // namespace tirn
