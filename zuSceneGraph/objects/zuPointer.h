#pragma once


namespace zu {

// Intrusive shared pointer: taking a non-null object increments its reference count,
// releasing it decrements (and the object deletes itself when the count reaches zero).
template <class T>
class zuPointer {
public:
    zuPointer(T* object = nullptr) : mObject(object) { acquire(); }
    zuPointer(const zuPointer& other) : mObject(other.mObject) { acquire(); }
    zuPointer(zuPointer&& other) noexcept : mObject(other.mObject) { other.mObject = nullptr; }
    template <class U>
    zuPointer(const zuPointer<U>& other) : mObject(other.get()) { acquire(); }
    ~zuPointer() { release(); }

    zuPointer& operator=(T* object)
    {
        if (object != mObject) {
            T* old = mObject;
            mObject = object;
            acquire();
            // The old object is released last: it may own the new one.
            if (old)
                old->DecrementReferences();
        }
        return *this;
    }
    zuPointer& operator=(const zuPointer& other) { return *this = other.mObject; }
    zuPointer& operator=(zuPointer&& other) noexcept
    {
        if (this != &other) {
            T* old = mObject;
            mObject = other.mObject;
            other.mObject = nullptr;
            if (old)
                old->DecrementReferences();
        }
        return *this;
    }

    T* get() const { return mObject; }
    operator T*() const { return mObject; }
    T& operator*() const { return *mObject; }
    T* operator->() const { return mObject; }
    // Comparisons and tests for null go through the conversion to T*.

private:
    void acquire()
    {
        if (mObject)
            mObject->IncrementReferences();
    }
    void release()
    {
        if (mObject)
            mObject->DecrementReferences();
    }

    T* mObject;
};

} // namespace zu
