#pragma once

#include <QList>
#include <algorithm>

namespace NerikResultDataXml {

/// A list that owns the objects it points to: copies are deep, a move hands the objects
/// over, and clearing or destroying the list deletes them. The parts of the result document
/// (transmissions, blocks, user data) keep their children in it, so that they copy, move and
/// compare without code of their own. items() is the plain pointer list for callers that
/// edit it; whoever removes a pointer from it takes over that object.
template <typename T>
class OwnedList
{
public:
    OwnedList() = default;
    OwnedList(OwnedList const& other)
    {
        m_items.reserve(other.m_items.size());
        for (T const* item : other.m_items) {
            m_items.append(new T(*item));
        }
    }
    OwnedList(OwnedList&& other) noexcept { m_items.swap(other.m_items); }
    // Copy before letting go: other may belong to one of our own objects.
    OwnedList& operator=(OwnedList const& other)
    {
        OwnedList copy(other);
        swap(copy);
        return *this;
    }
    OwnedList& operator=(OwnedList&& other) noexcept
    {
        OwnedList taken(std::move(other));
        swap(taken);
        return *this;
    }
    ~OwnedList() { qDeleteAll(m_items); }

    /// Appends an object and takes it over; a null pointer is ignored.
    void append(T* item)
    {
        if (item) {
            m_items.append(item);
        }
    }
    /// Deletes every object.
    void clear()
    {
        qDeleteAll(m_items);
        m_items.clear();
    }
    void swap(OwnedList& other) noexcept { m_items.swap(other.m_items); }

    QList<T*>& items() { return m_items; }
    QList<T*> const& items() const { return m_items; }
    int size() const { return m_items.size(); }
    bool isEmpty() const { return m_items.isEmpty(); }
    T* operator[](int index) const { return m_items[index]; }
    typename QList<T*>::const_iterator begin() const { return m_items.cbegin(); }
    typename QList<T*>::const_iterator end() const { return m_items.cend(); }

    /// Equal objects in the same order.
    bool operator==(OwnedList const& other) const
    {
        return std::equal(m_items.cbegin(), m_items.cend(), other.m_items.cbegin(),
                          other.m_items.cend(), [](T const* a, T const* b) { return *a == *b; });
    }
    bool operator!=(OwnedList const& other) const { return !(*this == other); }

private:
    QList<T*> m_items;
};

} // namespace NerikResultDataXml
