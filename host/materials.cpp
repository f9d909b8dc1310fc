#include "host/materials.h"

#include <algorithm>
#include <cmath>
#include <sstream>
#include <utility>

#include "ground/at.h"
#include "host/host_text.h"
#include "host/scratch_material.h"
#include "host/tsxapi.h"

namespace marrowfen {

namespace {

constexpr uint32_t kMapFlags = Shape::DetailMapFlag | Shape::BumpMapFlag | Shape::ReflectionMapFlag;
constexpr uint8_t kOpaqueFrom = 175;      // opacity bytes below it are translucent
constexpr float kValueTolerance = 0.01F;  // between detail scales and reflections of one material
constexpr int kEnvironmentShaderSlot = 3;
constexpr int kShaderNameSize = 32;          // bytes of the host's answer, the terminating zero included
constexpr int kTextureNameSize = 256;        // likewise
constexpr size_t kParameterNameLength = 62;  // bytes of a parameter's name that count

// One parameter of an environment-map shader: taken into info, or noted in the log.
void readShaderParameter(TsxShaderInfo* shader, int index, MaterialInfo& info, std::ostream& log) {
    TsxParameterValue* value = tsxShaderInfoGetParameterValue(shader, index);
    if (value == nullptr) return;
    const std::string name =
        hostText(tsxShaderInfoGetConstParameterName(shader, index)).substr(0, kParameterNameLength);
    const int type = tsxParameterValueGetType(value);

    float number = 0;
    const char* lentText = nullptr;
    unsigned char flag = 0;
    if (type == TsxFloatParameter) tsxParameterValueGetData(value, &number);
    if (type == TsxTextParameter) tsxParameterValueGetData(value, &lentText);
    if (type == TsxFlagParameter) tsxParameterValueGetData(value, &flag);
    const std::string text = hostText(lentText);

    if (name == "mirror factor") {
        if (type == TsxFloatParameter) info.mirrorFactor = number;
    } else if (name == "ambient factor") {
        if (type == TsxFloatParameter) info.ambientFactor = number;
    } else if (name == "file name") {
        if (type == TsxTextParameter) info.envMapName = reducedFileName(text);
    } else if (type == TsxFloatParameter) {
        log << name << ": " << number << std::endl;
    } else if (type == TsxFlagParameter) {
        log << name << ": " << (flag != 0 ? 1 : 0) << std::endl;
    } else if (type == TsxTextParameter) {
        log << name << ": " << text << std::endl;
    }
}

void readEnvironmentShader(TsxMaterial* material, MaterialInfo& info, std::ostream& log) {
    if (tsxMaterialIsShaderBoxNull(material) != 0 || tsxMaterialIsShaderBoxValid(material) != 1) return;
    TsxShaderInfo* shader = tsxMaterialGetShaderInfo(material, kEnvironmentShaderSlot);
    char name[kShaderNameSize] = {};
    if (shader == nullptr || tsxShaderInfoGetShaderName(shader, name) != 1 || std::string_view(name) != "c_envr_map")
        return;

    const int count = tsxShaderInfoGetParametersNumber(shader);
    log << "Number of Shader Params: " << count << std::endl;
    for (int j = 0; j < count; ++j) readShaderParameter(shader, j, info, log);
}

void readMaterialInfo(TsxMaterial* material, MaterialInfo& info, std::ostream& log) {
    char fileName[kTextureNameSize] = {};
    tsxMaterialGetTextureFilename(material, fileName, sizeof fileName);
    info.textureName = reducedFileName(fileName[0] != 0 ? fileName : kNoTextureName);

    float first = 0, second = 0, fourth = 0;
    tsxMaterialGetReflectionProps(material, &first, &second, &info.thirdReflectionProp, &fourth);

    readEnvironmentShader(material, info, log);
}

// A translucent material subtracts or adds as the third reflection property says.
uint32_t blendFlags(float thirdReflectionProp) {
    uint32_t flags = Shape::Translucent;
    if (thirdReflectionProp > 0 && thirdReflectionProp < 1) flags |= Shape::Subtractive;
    if (thirdReflectionProp == 1) flags |= Shape::Additive;
    return flags;
}

// Whether an entry of the same name has the values that are wanted.
bool serves(const Shape::Material& entry, const Shape::Material& wanted) {
    return (wanted.reflectance == -1 || entry.reflectance == wanted.reflectance) && entry.flags == wanted.flags &&
           entry.bump == wanted.bump && entry.detail == wanted.detail &&
           std::fabs(entry.detailScale - wanted.detailScale) < kValueTolerance &&
           std::fabs(entry.reflection - wanted.reflection) < kValueTolerance;
}

bool isMap(const Shape::Material& material) { return (material.flags & kMapFlags) != 0; }

// Reflections within the tolerance of each other are at most two steps apart.
int32_t reflectionStep(float reflection) {
    constexpr double kMost = 1e9;
    const double steps = std::floor(static_cast<double>(reflection) / kValueTolerance);
    return std::isnan(steps) ? 0 : static_cast<int32_t>(std::clamp(steps, -kMost, kMost));
}

}  // namespace

std::string_view reducedFileName(std::string_view fileName) {
    const size_t backslash = fileName.rfind('\\');
    if (backslash != std::string_view::npos) fileName.remove_prefix(backslash + 1);
    return fileName.substr(0, fileName.rfind('.'));
}

MaterialConversion::MaterialConversion(std::vector<Shape::Material>& materials, std::ostream& log,
                                       const TextureOptions& options)
    : materials_(materials), log_(log), options_(options) {
    for (int32_t i = 0; i < count32(materials); ++i) enter(i);
}

void MaterialConversion::enter(int32_t index) {
    const Shape::Material& material = at(materials_, index);
    SameName& sameName = byName_[material.name];
    if (!isMap(material)) {
        sameName.byReflection[reflectionStep(material.reflection)].push_back(index);
    } else if (sameName.firstMap < 0) {
        sameName.firstMap = index;
    }
}

const MaterialConversion::HostMaterial& MaterialConversion::hostMaterial(const SceneNode& polyhedron,
                                                                         int16_t materialNumber) {
    const auto [entry, isNew] = hostMaterials_.try_emplace(materialNumber);
    HostMaterial& found = entry->second;
    if (!isNew) return found;

    const ScratchMaterial scratch;
    found.known =
        scratch.handle() != nullptr && tsxPolyhGetMaterial(polyhedron.handle(), materialNumber, scratch.handle()) == 1;
    if (!found.known) return found;

    std::ostringstream lines;
    readMaterialInfo(scratch.handle(), found.info, lines);
    found.logText = lines.str();
    unsigned char color[4] = {};
    tsxMaterialGetColor(scratch.handle(), color);
    found.opacity = color[3];
    return found;
}

uint32_t MaterialConversion::faceMaterial(const SceneNode& polyhedron, int16_t materialNumber) {
    const HostMaterial& material = hostMaterial(polyhedron, materialNumber);
    if (!material.known) return Primitive::NoMaterial;
    if (!material.logText.empty()) log_ << material.logText << std::flush;

    const MaterialInfo& info = material.info;
    Shape::Material wanted;
    wanted.name = info.textureName;
    if (info.mirrorFactor > 0) {
        wanted.reflection = info.mirrorFactor;
        if (!info.envMapName.empty() && info.envMapName != info.textureName) {
            Shape::Material map;
            map.name = info.envMapName;
            map.flags = Shape::ReflectionMapFlag;
            map.reflection = 1;
            wanted.reflectance = findOrAddMaterial(std::move(map));
        }
    } else {
        wanted.flags |= Shape::NeverEnvMap;
    }
    if (info.ambientFactor > 0) wanted.flags |= Shape::SelfIlluminating;
    if (material.opacity < kOpaqueFrom) wanted.flags |= blendFlags(info.thirdReflectionProp);
    return static_cast<uint32_t>(findOrAddMaterial(std::move(wanted)));
}

int32_t MaterialConversion::findOrAddMaterial(Shape::Material wanted) {
    const bool isTranslucent = (wanted.flags & Shape::Translucent) != 0;
    if (options_.noMipmap || (options_.noMipmapTrans && isTranslucent)) wanted.flags |= Shape::NoMipMap;
    // The smaller levels of a cut-out texture bleed its border colour into the edge: that is what the option is for,
    // and opaque textures have no such edge.
    if (options_.noBlackBorder && isTranslucent) wanted.flags |= Shape::MipMapZeroBorder;

    const int32_t found = find(wanted);
    if (found >= 0) {
        if (isMap(wanted)) at(materials_, found).flags |= kMapFlags;
        return found;
    }
    const int32_t added = count32(materials_);
    if (wanted.reflectance == -1 && !isMap(wanted)) wanted.reflectance = added;
    materials_.push_back(std::move(wanted));
    enter(added);
    return added;
}

// The first entry that serves, -1 for none. Every map of a name serves for all of them.
int32_t MaterialConversion::find(const Shape::Material& wanted) const {
    const auto sameName = byName_.find(wanted.name);
    if (sameName == byName_.end()) return -1;
    if (isMap(wanted)) return sameName->second.firstMap;
    int32_t first = -1;
    const int32_t step = reflectionStep(wanted.reflection);
    for (int32_t s = step - 2; s <= step + 2; ++s) {
        const auto alike = sameName->second.byReflection.find(s);
        if (alike == sameName->second.byReflection.end()) continue;
        for (const int32_t index : alike->second) {
            if ((first >= 0 && index > first) || !serves(at(materials_, index), wanted)) continue;
            first = index;
            break;
        }
    }
    return first;
}

}  // namespace marrowfen
