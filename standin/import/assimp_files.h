#pragma once

// Files as Assimp's readers get them: text of 16 bits a letter comes as UTF-8, and numbers of Collada files begin where
// their element does, which both its reader asks for and the formats don't.

#include <assimp/DefaultIOSystem.h>

namespace marrowfen::standin {

class ModelFiles : public Assimp::DefaultIOSystem {
public:
    Assimp::IOStream* Open(const char* path, const char* mode) override;
};

}  // namespace marrowfen::standin
