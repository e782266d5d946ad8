#pragma once

#include <QHash>
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
    OwnedList(OwnedList&& other) noexcept { swap(other); }
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
        forgetIndex();
    }
    void swap(OwnedList& other) noexcept
    {
        m_items.swap(other.m_items);
        forgetIndex();
        other.forgetIndex();
    }

    /// The last object whose GetID() is id, or null: what a search from the end finds. The
    /// list keeps an index of IDs that grows with the list, so that looking up in a list that
    /// only grows (the usual life of a document's blocks) costs constant time instead of a
    /// walk through every object; a list changed through items() in another way, or an
    /// object whose ID changed, is indexed anew.
    T* findLastById(int id) const
    {
        bool const onlyGrew = m_indexed <= m_items.size() &&
                              (m_indexed == 0 || m_items[m_indexed - 1] == m_indexedTail);
        if (!onlyGrew) {
            forgetIndex();
        }
        for (; m_indexed < m_items.size(); ++m_indexed) {
            m_idIndex.insert(m_items[m_indexed]->GetID(), m_indexed);
        }
        m_indexedTail = m_indexed > 0 ? m_items[m_indexed - 1] : nullptr;
        auto const found = m_idIndex.constFind(id);
        if (found == m_idIndex.constEnd()) {
            return nullptr;
        }
        T* const item = m_items[*found];
        if (item->GetID() == id) {
            return item;
        }
        forgetIndex();
        for (int i = m_items.size() - 1; i >= 0; --i) {
            if (m_items[i]->GetID() == id) {
                return m_items[i];
            }
        }
        return nullptr;
    }

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
    void forgetIndex() const
    {
        m_idIndex.clear();
        m_indexed = 0;
        m_indexedTail = nullptr;
    }

    QList<T*> m_items;
    // The ID index of findLastById(): IDs of the first m_indexed objects, the last of which
    // was m_indexedTail when they were indexed.
    mutable QHash<int, int> m_idIndex;
    mutable int m_indexed = 0;
    mutable T const* m_indexedTail = nullptr;
};

} // namespace NerikResultDataXml
