#pragma once

#include "host/tsxapi.h"

namespace marrowfen {

// A material of our own to read a host's material into, or to paint with; given back at the end. The host may have
// none to give.
class ScratchMaterial {
public:
    ScratchMaterial() { tsxMaterialCreate(&handle_); }
    ~ScratchMaterial() {
        if (handle_ != nullptr) tsxMaterialDestroy(handle_);
    }
    ScratchMaterial(const ScratchMaterial&) = delete;
    ScratchMaterial& operator=(const ScratchMaterial&) = delete;

    TsxMaterial* handle() const { return handle_; }  // null when the host had none

private:
    TsxMaterial* handle_ = nullptr;
};

}  // namespace marrowfen
