#pragma once

#include <zuSceneGraph/objects/zuUnnamedObject.h>

#include <cstddef>

namespace zu {

// The base of the render states a spatial object carries, at most one of each kind. A
// state is a small value with no name and no controllers, so its persisted record is that
// of zuObject followed by the fields of the concrete class.
class zuGlobalState : public zuUnnamedObject {
public:
    static const zuRtti TYPE;

    // The state-type numbers; a spatial object keeps its states in slots of these numbers.
    enum StateType : int {
        ALPHA,
        CULL,
        MATERIAL,
        POLYGONOFFSET,
        STENCIL,
        WIREFRAME,
        ZBUFFER,
        TEXTURE,
        MAX_STATE_TYPE
    };

    const zuRtti& GetType() const override { return TYPE; }
    virtual StateType GetStateType() const = 0;

protected:
    zuGlobalState() = default;

    // The name of an enumerator in a class's name table. Enumerations are kept as read
    // from a file, so a value may lie outside its table: it reads as "UNKNOWN".
    template <std::size_t N>
    static const char* NameOf(const char* const (&table)[N], int value)
    {
        return value >= 0 && static_cast<std::size_t>(value) < N ? table[value] : "UNKNOWN";
    }
};

} // namespace zu
