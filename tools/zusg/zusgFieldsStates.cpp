// Field printers of the render states: every persisted field by its member name,
// enumerations by their enumerator names. Values read from a file are kept even outside
// their enumeration; the classes' name look-ups answer "UNKNOWN" for those, and the raw
// value is shown beside it.

#include "zusgFields.h"

#include <zuSceneGraph/states/zuAlphaState.h>
#include <zuSceneGraph/states/zuCullState.h>
#include <zuSceneGraph/states/zuPolygonOffsetState.h>
#include <zuSceneGraph/states/zuStencilState.h>
#include <zuSceneGraph/states/zuWireframeState.h>
#include <zuSceneGraph/states/zuZBufferState.h>

#include <cstdio>

namespace zusg {

namespace {

std::string hex(unsigned int value)
{
    char text[16];
    std::snprintf(text, sizeof text, "0x%08X", value);
    return text;
}

void printAlpha(const zu::zuRttiInterface& object, std::ostream& out)
{
    using zu::zuAlphaState;
    const auto& state = static_cast<const zuAlphaState&>(object);
    out << "BlendEnabled " << flag(state.BlendEnabled)
        << ", SrcBlend " << enumerator(zuAlphaState::GetSrcBlendName(state.SrcBlend), state.SrcBlend)
        << ", DstBlend " << enumerator(zuAlphaState::GetDstBlendName(state.DstBlend), state.DstBlend) << "\n";
    out << "TestEnabled " << flag(state.TestEnabled)
        << ", Test " << enumerator(zuAlphaState::GetTestModeName(state.Test), state.Test)
        << ", Reference " << number(state.Reference) << "\n";
}

void printCull(const zu::zuRttiInterface& object, std::ostream& out)
{
    using zu::zuCullState;
    const auto& state = static_cast<const zuCullState&>(object);
    out << "Enabled " << flag(state.Enabled)
        << ", FrontFace " << enumerator(zuCullState::GetFrontModeName(state.FrontFace), state.FrontFace)
        << ", CullFace " << enumerator(zuCullState::GetCullModeName(state.CullFace), state.CullFace) << "\n";
}

void printPolygonOffset(const zu::zuRttiInterface& object, std::ostream& out)
{
    const auto& state = static_cast<const zu::zuPolygonOffsetState&>(object);
    out << "FillEnabled " << flag(state.FillEnabled) << ", LineEnabled " << flag(state.LineEnabled)
        << ", PointEnabled " << flag(state.PointEnabled) << "\n";
    out << "Scale " << number(state.Scale) << ", Bias " << number(state.Bias) << "\n";
}

void printStencil(const zu::zuRttiInterface& object, std::ostream& out)
{
    using zu::zuStencilState;
    const auto& state = static_cast<const zuStencilState&>(object);
    out << "Enabled " << flag(state.Enabled)
        << ", Compare " << enumerator(zuStencilState::GetCompareName(state.Compare), state.Compare)
        << ", Reference " << state.Reference << ", Mask " << hex(state.Mask) << ", WriteMask " << hex(state.WriteMask)
        << "\n";
    out << "OnFail " << enumerator(zuStencilState::GetOperationName(state.OnFail), state.OnFail)
        << ", OnZFail " << enumerator(zuStencilState::GetOperationName(state.OnZFail), state.OnZFail)
        << ", OnZPass " << enumerator(zuStencilState::GetOperationName(state.OnZPass), state.OnZPass) << "\n";
}

void printWireframe(const zu::zuRttiInterface& object, std::ostream& out)
{
    const auto& state = static_cast<const zu::zuWireframeState&>(object);
    out << "Enabled " << flag(state.Enabled) << "\n";
}

void printZBuffer(const zu::zuRttiInterface& object, std::ostream& out)
{
    using zu::zuZBufferState;
    const auto& state = static_cast<const zuZBufferState&>(object);
    out << "Enabled " << flag(state.Enabled) << ", Writable " << flag(state.Writable)
        << ", Compare " << enumerator(zuZBufferState::GetCompareModeName(state.Compare), state.Compare) << "\n";
}

} // namespace

void addStateFields(FieldRegistry& registry)
{
    registry.add(zu::zuAlphaState::TYPE, printAlpha);
    registry.add(zu::zuCullState::TYPE, printCull);
    registry.add(zu::zuPolygonOffsetState::TYPE, printPolygonOffset);
    registry.add(zu::zuStencilState::TYPE, printStencil);
    registry.add(zu::zuWireframeState::TYPE, printWireframe);
    registry.add(zu::zuZBufferState::TYPE, printZBuffer);
}

} // namespace zusg
