#pragma once

#include <zuSceneGraph/objects/zuPointer.h>

#include <map>
#include <string>
#include <vector>

namespace zu {

// Objects shared by name: the image catalogue through which the textures of one or more
// loads share their images ("StreamImgCatalog" of a stream), and the like. The catalogue
// holds one reference on each object it keeps, so an object lives at least as long as it
// is listed; ReleaseAll drops them all.
//
// An object is listed under the name it had when it was added: renaming it later does not
// move it. An object without a name cannot be shared by name and is never listed. The
// catalogue takes no lock: like the scene, it is used by one thread at a time.
template <class T>
class zuCatalog {
public:
    zuCatalog() = default;
    zuCatalog(const zuCatalog&) = delete;
    zuCatalog& operator=(const zuCatalog&) = delete;
    ~zuCatalog() = default;

    // Lists `object` under its name. False, changing nothing, when it is null, has no name,
    // or another object (or itself) is listed under that name already: the first one stays.
    bool Add(T* object)
    {
        if (!object || object->GetName().empty() || mObjects.count(object->GetName()))
            return false;
        // Looked up first: a refused object never passes through a pointer, so one that
        // nothing references yet is not freed by the refusal.
        mObjects.emplace(object->GetName(), zuPointer<T>(object));
        return true;
    }
    // The object listed under `name`, or null.
    T* Find(const std::string& name) const
    {
        const auto found = mObjects.find(name);
        return found == mObjects.end() ? nullptr : found->second.get();
    }
    bool Contains(const std::string& name) const { return mObjects.count(name) != 0; }
    // The object to use in place of `object`: the one listed under its name when there is
    // one; otherwise `object` itself, which is listed from now on (when it has a name).
    T* Share(T* object)
    {
        if (!object || object->GetName().empty())
            return object;
        if (T* listed = Find(object->GetName()))
            return listed;
        mObjects.emplace(object->GetName(), zuPointer<T>(object));
        return object;
    }
    // Drops the object listed under `name`; false when there is none.
    bool Remove(const std::string& name) { return mObjects.erase(name) != 0; }
    // Drops `object` when it is the one listed under its name; false otherwise.
    bool Remove(T* object)
    {
        if (!object)
            return false;
        const auto found = mObjects.find(object->GetName());
        if (found == mObjects.end() || found->second.get() != object)
            return false;
        mObjects.erase(found);
        return true;
    }
    // Drops every object; those that nothing else references are freed.
    void ReleaseAll()
    {
        // Moved out first: freeing an object must not run while the map is half cleared.
        std::map<std::string, zuPointer<T>> released;
        released.swap(mObjects);
    }
    int GetQuantity() const { return static_cast<int>(mObjects.size()); }
    // The listed names in sorted order.
    std::vector<std::string> GetNames() const
    {
        std::vector<std::string> names;
        names.reserve(mObjects.size());
        for (const auto& entry : mObjects)
            names.push_back(entry.first);
        return names;
    }

private:
    std::map<std::string, zuPointer<T>> mObjects;
};

} // namespace zu
