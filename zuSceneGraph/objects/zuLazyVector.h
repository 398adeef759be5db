#pragma once

#include <cstddef>
#include <memory>
#include <vector>

namespace zu {

// A vector for members that most objects leave empty: one pointer while empty, the vector
// itself made on the first insertion. Scene objects are many, and a plain std::vector
// member costs each of them 24 bytes.
template <class T> class zuLazyVector {
public:
    zuLazyVector() = default;
    zuLazyVector(const zuLazyVector& other) { *this = other; }
    zuLazyVector& operator=(const zuLazyVector& other)
    {
        if (this != &other)
            mVector = other.empty() ? nullptr : std::make_unique<std::vector<T>>(*other.mVector);
        return *this;
    }

    size_t size() const { return mVector ? mVector->size() : 0; }
    bool empty() const { return size() == 0; }
    T& operator[](size_t i) { return (*mVector)[i]; }
    const T& operator[](size_t i) const { return (*mVector)[i]; }
    T* begin() { return mVector ? mVector->data() : nullptr; }
    T* end() { return begin() + size(); }
    const T* begin() const { return mVector ? mVector->data() : nullptr; }
    const T* end() const { return begin() + size(); }

    void insert(const T* position, T value)
    {
        const ptrdiff_t index = position - begin();
        vector().insert(mVector->begin() + index, std::move(value));
    }
    void erase(const T* position) { mVector->erase(mVector->begin() + (position - begin())); }
    void resize(size_t count)
    {
        if (count == 0)
            clear();
        else
            vector().resize(count);
    }
    void clear() { mVector.reset(); }

private:
    std::vector<T>& vector()
    {
        if (!mVector)
            mVector = std::make_unique<std::vector<T>>();
        return *mVector;
    }

    std::unique_ptr<std::vector<T>> mVector;
};

} // namespace zu
