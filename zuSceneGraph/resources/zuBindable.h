#pragma once

namespace zu {

class zuResourceIdentifier;

// An object that a renderer can bind: the renderer records its binding with onLoad (its
// identifier and the function that drops it) and forgets it with onRelease. The object only
// holds the binding; what the identifier stands for belongs to the renderer.
//
// Bindings are made and dropped on the thread that owns the scene.
class zuBindable {
public:
    using ReleaseFunction = void (*)(zuBindable*);

    zuBindable() = default;
    // A copy is a new object that no renderer has bound yet.
    zuBindable(const zuBindable&) {}
    zuBindable& operator=(const zuBindable&) { return *this; }
    // Drops any binding that is left (release()).
    virtual ~zuBindable();

    // The renderer's identifier, or null while the object is not bound.
    virtual zuResourceIdentifier* getIdentifier() const;
    // Asks the renderer to drop its binding: calls the release function given to onLoad,
    // which is expected to free the renderer's data and answer with onRelease. The binding
    // is forgotten afterwards even if the renderer did not answer.
    virtual void release();
    // Called by the renderer once it has bound the object.
    virtual void onLoad(ReleaseFunction releaseFunction, zuResourceIdentifier* identifier);
    // Called by the renderer when it drops the binding; an identifier other than the
    // current one (a stale release) is ignored.
    virtual void onRelease(zuResourceIdentifier* identifier);

private:
    // Forgets the binding: the identifier and the release function.
    void forget();

    // The renderer's identifier; BOUND_WITHOUT_IDENTIFIER when a release function was given
    // with a null identifier. The release functions of bound objects are kept in a table
    // beside them: most objects of a scene are never bound, and each is 8 bytes smaller.
    zuResourceIdentifier* mIdentifier = nullptr;
};

} // namespace zu
