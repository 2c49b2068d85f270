#pragma once
// Owned array of pointers for the INI classes. It grows by exactly one slot
// per insertion: the files are tens of lines, so simplicity wins over
// amortised growth.

#include <cstddef>

template <typename T>
class TPtrArray {
public:
    TPtrArray() = default;
    ~TPtrArray() { Clear(); }
    TPtrArray(const TPtrArray&) = delete;
    TPtrArray& operator=(const TPtrArray&) = delete;

    int Count() const { return count; }

    // Takes ownership of `item`.
    void Append(T* item) {
        T** grown = new T*[count + 1];
        for (int i = 0; i < count; ++i) grown[i] = items[i];
        grown[count] = item;
        delete[] items;
        items = grown;
        ++count;
    }

    // An index past the end yields the last element; an empty array yields null.
    T* At(int index) const {
        if (count == 0) return nullptr;
        if (index < 0) index = 0;
        return items[index < count ? index : count - 1];
    }

    void Clear() {
        for (int i = 0; i < count; ++i) delete items[i];
        delete[] items;
        items = nullptr;
        count = 0;
    }

private:
    T** items = nullptr;
    int count = 0;
};
