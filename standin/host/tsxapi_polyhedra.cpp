#include "ground/at.h"
#include "host/tsxapi.h"
#include "standin/host/api_handles.h"

// Polyhedra, materials and shaders.

using namespace marrowfen::standin;

namespace {

constexpr int kShaderSlot = 3;         // of the shader box, the one that a scene can fill
constexpr int kShaderNameBuffer = 32;  // bytes

PolyhedronArrays* arraysOf(const TsxNode* handle, const char* caller) {
    HostNode* node = polyhedronOf(handle, caller);
    return node ? &host().arraysOf(*node) : nullptr;
}

// A cube that the plug-in made; the others' materials are the scene's.
HostNode* paintableOf(const TsxNode* handle, const char* caller) {
    HostNode* node = polyhedronOf(handle, caller);
    if (node == nullptr || host().canPaint(*node)) return node;
    host().handles.addFault(caller, "polyhedron \"" + node->node->name + "\" isn't one that tsxCreateCube made");
    return nullptr;
}

ScratchMaterial* scratchOf(const TsxMaterial* handle, const char* caller) {
    return host().handles.find<ScratchMaterial>(HandleKind::Material, handle, caller);
}

const HostMaterial* materialOf(const TsxMaterial* handle, const char* caller) {
    const ScratchMaterial* scratch = scratchOf(handle, caller);
    return scratch ? scratch->material : nullptr;
}

// A shader handle stands for the scratch material that it was asked of.
ScratchMaterial* shaderOf(const TsxShaderInfo* handle, const char* caller) {
    return host().handles.find<ScratchMaterial>(HandleKind::Shader, handle, caller);
}

// The parameter with that number; null and a fault if there is none.
const ShaderParameter* parameterOf(const TsxShaderInfo* handle, int index, const char* caller) {
    const ScratchMaterial* scratch = shaderOf(handle, caller);
    if (scratch == nullptr) return nullptr;
    const std::vector<ShaderParameter>& parameters = scratch->material->shader->parameters;
    if (index >= 0 && static_cast<size_t>(index) < parameters.size()) return &marrowfen::at(parameters, index);
    host().handles.addFault(caller, "parameter " + std::to_string(index) + " of " + std::to_string(parameters.size()));
    return nullptr;
}

const ShaderParameter* parameterOf(const TsxParameterValue* handle, const char* caller) {
    return host().handles.find<const ShaderParameter>(HandleKind::ParameterValue, handle, caller);
}

template <class T>
void store(const T& value, void* address) {
    std::memcpy(address, &value, sizeof value);
}

}  // namespace

TsxNode* tsxMNodeGetTriangulatedPolyhedron(TsxNode* handle) {
    HostNode* node = polyhedronOf(handle, __func__);
    return node ? host().makeTriangulatedCopy(*node) : nullptr;
}

int tsxPolyhGetNbrVxs(TsxNode* polyhedron) {
    const PolyhedronArrays* arrays = arraysOf(polyhedron, __func__);
    return arrays ? arrays->vertexCount() : 0;
}

float* tsxPolyhGetVxArray(TsxNode* polyhedron) {
    PolyhedronArrays* arrays = arraysOf(polyhedron, __func__);
    return arrays ? arrays->vertices() : nullptr;
}

float* tsxPolyhGetVxNormalsArray(TsxNode* polyhedron) {
    PolyhedronArrays* arrays = arraysOf(polyhedron, __func__);
    return arrays ? arrays->normals() : nullptr;
}

void tsxPolyhGetVxTxmx(TsxNode* handle, float* transform) {
    const HostNode* node = polyhedronOf(handle, __func__);
    const Transform answer = node ? HostState::vertexTransformOf(*node) : transformFrom({}, {});
    std::copy(answer.begin(), answer.end(), transform);
}

int tsxPolyhGetNbrUV(TsxNode* polyhedron) {
    const PolyhedronArrays* arrays = arraysOf(polyhedron, __func__);
    return arrays ? arrays->uvCount() : 0;
}

float* tsxPolyhGetUVArray(TsxNode* polyhedron) {
    PolyhedronArrays* arrays = arraysOf(polyhedron, __func__);
    return arrays ? arrays->uvs() : nullptr;
}

int tsxPolyhGetNbrFaces(TsxNode* polyhedron) {
    const PolyhedronArrays* arrays = arraysOf(polyhedron, __func__);
    return arrays ? arrays->faceCount() : 0;
}

void** tsxPolyhGetFaceptrArray(TsxNode* polyhedron) {
    PolyhedronArrays* arrays = arraysOf(polyhedron, __func__);
    return arrays ? arrays->faces() : nullptr;
}

void tsxPolyhInitializeMaterials(TsxNode* handle) {
    HostNode* node = paintableOf(handle, __func__);
    if (node == nullptr) return;
    node->materials.clear();
    host().paintFaces(*node, 0, node->node->polyhedron.faces.size(), HostMaterial{});
}

void tsxPolyhPaint(TsxNode* handle, TsxMaterial* material) {
    HostNode* node = paintableOf(handle, __func__);
    const HostMaterial* paint = materialOf(material, __func__);
    if (node != nullptr && paint != nullptr) {
        host().paintFaces(*node, 0, node->node->polyhedron.faces.size(), *paint);
    }
}

void tsxPolyhPaintFace(TsxNode* handle, int face, TsxMaterial* material, int argument) {
    host().handles.expectFixed(__func__, argument, 0);
    HostNode* node = paintableOf(handle, __func__);
    const HostMaterial* paint = materialOf(material, __func__);
    if (node == nullptr || paint == nullptr) return;
    const size_t count = node->node->polyhedron.faces.size();
    if (face >= 0 && static_cast<size_t>(face) < count) {
        host().paintFaces(*node, static_cast<size_t>(face), 1, *paint);
    } else {
        host().handles.addFault(__func__, "face " + std::to_string(face) + " of " + std::to_string(count));
    }
}

int tsxPolyhGetMaterial(TsxNode* polyhedron, short number, TsxMaterial* into) {
    const HostNode* node = polyhedronOf(polyhedron, __func__);
    ScratchMaterial* scratch = scratchOf(into, __func__);
    if (node == nullptr || scratch == nullptr) return 0;
    if (number < 0 || static_cast<size_t>(number) >= node->materials.size()) return 0;
    const HostMaterial* material = marrowfen::at(node->materials, number);
    if (material == nullptr) return 0;
    host().setScratch(*scratch, material);
    return 1;
}

void tsxMaterialCreate(TsxMaterial** material) { *material = host().makeScratch(); }

void tsxMaterialDestroy(TsxMaterial* material) {
    ScratchMaterial* scratch = scratchOf(material, __func__);
    if (scratch != nullptr) host().releaseScratch(material, *scratch);
}

void tsxMaterialGetColor(TsxMaterial* handle, unsigned char* rgba) {
    const HostMaterial* material = materialOf(handle, __func__);
    const HostMaterial none;
    std::copy_n((material ? material : &none)->color.data(), 4, rgba);
}

void tsxMaterialSetColor(TsxMaterial* handle, const unsigned char* rgba) {
    ScratchMaterial* scratch = scratchOf(handle, __func__);
    if (scratch == nullptr) return;
    if (scratch->material != &scratch->edited) scratch->edited = *scratch->material;
    host().setScratch(*scratch, &scratch->edited);
    std::copy_n(rgba, 4, scratch->edited.color.data());
}

void tsxMaterialGetTextureFilename(TsxMaterial* handle, char* buffer, int size) {
    const HostMaterial* material = materialOf(handle, __func__);
    copyText(material ? material->texture : "", buffer, size);
}

void tsxMaterialGetReflectionProps(TsxMaterial* handle, float* first, float* second, float* third, float* fourth) {
    const HostMaterial* material = materialOf(handle, __func__);
    const std::array<float, 4> properties = material ? material->reflection : std::array<float, 4>{};
    *first = properties[0];
    *second = properties[1];
    *third = properties[2];
    *fourth = properties[3];
}

int tsxMaterialIsShaderBoxNull(TsxMaterial* handle) {
    const HostMaterial* material = materialOf(handle, __func__);
    return material != nullptr && material->shader ? 0 : 1;
}

int tsxMaterialIsShaderBoxValid(TsxMaterial* handle) {
    const HostMaterial* material = materialOf(handle, __func__);
    return material != nullptr && material->shader && material->shader->valid ? 1 : 0;
}

TsxShaderInfo* tsxMaterialGetShaderInfo(TsxMaterial* material, int slot) {
    ScratchMaterial* scratch = scratchOf(material, __func__);
    if (scratch == nullptr || slot != kShaderSlot || !scratch->material->shader) return nullptr;
    if (scratch->shader == nullptr) {
        scratch->shader = host().handles.add<TsxShaderInfo>(HandleKind::Shader, scratch);
        scratch->values.resize(scratch->material->shader->parameters.size());
    }
    return scratch->shader;
}

int tsxShaderInfoGetShaderName(TsxShaderInfo* handle, char* buffer) {
    const ScratchMaterial* scratch = shaderOf(handle, __func__);
    copyText(scratch ? scratch->material->shader->name : "", buffer, kShaderNameBuffer);
    return scratch ? 1 : 0;
}

int tsxShaderInfoGetParametersNumber(TsxShaderInfo* handle) {
    const ScratchMaterial* scratch = shaderOf(handle, __func__);
    return scratch ? static_cast<int>(scratch->material->shader->parameters.size()) : 0;
}

TsxParameterValue* tsxShaderInfoGetParameterValue(TsxShaderInfo* shader, int index) {
    const ShaderParameter* parameter = parameterOf(shader, index, __func__);
    if (parameter == nullptr) return nullptr;
    TsxParameterValue*& value = shaderOf(shader, __func__)->values[static_cast<size_t>(index)];
    if (value == nullptr) value = host().handles.add<TsxParameterValue>(HandleKind::ParameterValue, parameter);
    return value;
}

const char* tsxShaderInfoGetConstParameterName(TsxShaderInfo* shader, int index) {
    const ShaderParameter* parameter = parameterOf(shader, index, __func__);
    return parameter ? parameter->name.c_str() : "";
}

int tsxParameterValueGetType(TsxParameterValue* value) {
    const ShaderParameter* parameter = parameterOf(value, __func__);
    return parameter ? parameter->type : 0;
}

// Stores nothing for a type that the plug-in doesn't know.
void tsxParameterValueGetData(TsxParameterValue* value, void* data) {
    const ShaderParameter* parameter = parameterOf(value, __func__);
    if (parameter == nullptr) return;
    const bool* flag = std::get_if<bool>(&parameter->value);
    const float* number = std::get_if<float>(&parameter->value);
    const std::string* text = std::get_if<std::string>(&parameter->value);
    switch (parameter->type) {
        case TsxFlagParameter:
            store<unsigned char>(flag != nullptr && *flag ? 1 : 0, data);
            break;
        case TsxFloatParameter:
            store<float>(number ? *number : 0, data);
            break;
        case TsxTextParameter:
            store<const char*>(text ? text->c_str() : "", data);
            break;
        default:
            break;
    }
}
