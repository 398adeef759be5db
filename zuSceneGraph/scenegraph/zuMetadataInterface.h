#pragma once

#include <zuSceneGraph/objects/zuUnnamedObject.h>

#include <cstdint>

namespace zu {

class zuSpatial;

// The base of the records that applications attach to spatial objects (semantic
// properties, captures, instance data, ...). Each kind has a 32-bit type key: a spatial
// object keeps at most one record per key, sorted by key. After a stream load the owner
// hands itself to each of its records through updateMetaData.
//
// The base adds nothing to the persisted record of zuObject.
class zuMetadataInterface : public zuUnnamedObject {
public:
    static const zuRtti TYPE;

    const zuRtti& GetType() const override { return TYPE; }
    virtual uint32_t getTypeKey() const = 0;
    // Tells the record which object carries it (called by the owner's PostLink).
    virtual void updateMetaData(zuSpatial* owner) = 0;

    // The other record must be metadata of the same key.
    bool Equals(const zuRttiInterface* other) const override;

protected:
    zuMetadataInterface() = default;
};

} // namespace zu
