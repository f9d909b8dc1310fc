#pragma once

// The words by which text output names the flags of materials and sequences, in rising order of their bits.

#include "ground/flag_text.h"
#include "shape/shape.h"

namespace marrowfen {

inline constexpr FlagWord kSequenceFlagWords[] = {
    {Shape::UniformScale, "uniformscale"},
    {Shape::AlignedScale, "alignedscale"},
    {Shape::ArbitraryScale, "arbitraryscale"},
    {Shape::Blend, "blend"},
    {Shape::Cyclic, "cyclic"},
    {Shape::MakePath, "makepath"},
    {Shape::IflInit, "iflinit"},
    {Shape::HasTranslucency, "hastranslucency"},
};

inline constexpr FlagWord kMaterialFlagWords[] = {
    {Shape::SWrap, "swrap"},
    {Shape::TWrap, "twrap"},
    {Shape::Translucent, "translucent"},
    {Shape::Additive, "additive"},
    {Shape::Subtractive, "subtractive"},
    {Shape::SelfIlluminating, "selfilluminating"},
    {Shape::NeverEnvMap, "neverenvmap"},
    {Shape::NoMipMap, "nomipmap"},
    {Shape::MipMapZeroBorder, "mipmapzeroborder"},
    {Shape::IflMaterialFlag, "iflmaterial"},
    {Shape::IflFrame, "iflframe"},
    {Shape::DetailMapFlag, "detailmap"},
    {Shape::BumpMapFlag, "bumpmap"},
    {Shape::ReflectionMapFlag, "reflectionmap"},
};

}  // namespace marrowfen
