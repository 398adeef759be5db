#pragma once

namespace zu {

// What a renderer keeps for one object it has bound (its buffer names, sizes, ...). The
// library only stores the pointer in the bound object (zuBindable); the renderer derives
// from this class, creates the instances and frees them.
class zuResourceIdentifier {
public:
    virtual ~zuResourceIdentifier() = default;
};

} // namespace zu
