#pragma once

#include "standin/import/source_model.h"

namespace marrowfen::standin {

// Files that have a place for normals but none to put there hold zeros.
bool hasUsableNormals(const SourceMesh& mesh);

// True when the normals look to the other side of nearly every face: one of the two looks inward.
bool normalsOpposeFaces(const SourceMesh& mesh);

// The volume that the faces enclose, times six: negative when they look inward. Of an open mesh it is measured from the
// middle of its vertices.
double enclosedVolume(const SourceMesh& mesh);

// True when every edge lies between two faces that turn round it in opposite ways, by position.
bool isClosed(const SourceMesh& mesh);

}  // namespace marrowfen::standin
