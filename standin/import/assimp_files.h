#pragma once

// Files as Assimp's readers get them: text of 16 bits a letter comes as UTF-8, and numbers of Collada files begin where
// their element does, which both its reader asks for and the formats don't.

#include <assimp/DefaultIOSystem.h>

#include <string>
#include <utility>
#include <vector>

#include "standin/host/scene.h"

namespace marrowfen::standin {

// How an AC3D surface shows. The format says it of each surface and the reader passes it over, so each material gets a
// copy for each kind, with this letter and the kind's digit behind its name.
inline constexpr char kKindMark = '\x01';
inline constexpr int kSmoothSurface = 1, kTwoSidedSurface = 2, kSurfaceKinds = 4;

// Files that aren't the model's own aren't there.
class ModelFiles : public Assimp::DefaultIOSystem {
public:
    explicit ModelFiles(std::string model) : model_(std::move(model)) {}
    bool Exists(const char* path) const override;
    Assimp::IOStream* Open(const char* path, const char* mode) override;

    const std::vector<LookedFor>& lookedFor() const { return lookedFor_; }

private:
    bool finds(const char* path) const;

    std::string model_;
    mutable std::vector<LookedFor> lookedFor_;
};

}  // namespace marrowfen::standin
