#pragma once

#include <vector>

#include <QString>

#include "mesh/triangle.h"

namespace tirn {

/// What a stereolithography file holds.
struct StlContent
{
    QString name;
    std::vector<Triangle> facets;
};

/// Reads an STL file, ASCII or binary. Returns the reason of a failure, empty for none.
QString readStl(const QString& fileName, StlContent& content);

} // namespace tirn
