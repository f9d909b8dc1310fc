#pragma once

#include <assimp/mesh.h>

namespace marrowfen::standin {

// Files that have a place for normals but none to put there hold zeros.
bool hasUsableNormals(const aiMesh& mesh);

// True when the normals look to the other side of nearly every face: one of the two looks inward.
bool normalsOpposeFaces(const aiMesh& mesh);

// The volume that the faces enclose, times six: negative when they look inward. Of an open mesh it is measured from the
// middle of its vertices.
double enclosedVolume(const aiMesh& mesh);

}  // namespace marrowfen::standin
