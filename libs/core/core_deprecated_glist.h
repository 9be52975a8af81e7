#pragma once

#include <cstddef>

namespace core {

namespace detail {

/// The nodes of a GList, whatever its items are.
class GListBase {
public:
    GListBase(const GListBase&) = delete;
    GListBase& operator=(const GListBase&) = delete;

    size_t count() const { return d_count; }
    bool empty() const { return d_count == 0; }

protected:
    struct Node {
        Node* previous;
        Node* next;
        void* item;
    };

    GListBase() = default;
    ~GListBase() = default; // the derived list frees the nodes

    bool append(void* item);
    void* first();
    void* next();
    Node* find(const void* item) const;
    /// Removes and frees the node; returns its item.
    void* unlink(Node* node);

    Node* d_head = nullptr;
    Node* d_tail = nullptr;
    Node* d_cursor = nullptr; // of the item that `next` will return

private:
    size_t d_count = 0;
};

} // namespace detail

/// Doubly linked list of pointers to items, with one built-in iteration:
///
///     for (Item* item = list.first(); item != nullptr; item = list.next())
///         use(*item);
///
/// Null is no item. Removing an item, the current one included, does not disturb the
/// iteration. A list that owns its items deletes each when it is removed, and the rest
/// when the list is destroyed. Inconsistent links are a failed check. One thread at a
/// time.
///
/// Kept for the classes that are built on it; new code takes a std::vector.
template <typename T>
class GList : public detail::GListBase {
public:
    GList() = default;
    ~GList() { clear(); }

    /// Off at start.
    bool ownsItems() const { return d_ownsItems; }
    void setOwnsItems(bool owns) { d_ownsItems = owns; }

    /// Adds an item at the end. False after a failed check if the list has lost its tail:
    /// nothing has changed, and the caller keeps the item, even if the list owns its
    /// items.
    bool append(T* item) { return GListBase::append(item); }

    /// Starts the iteration and returns the first item; null if there is none.
    T* first() { return static_cast<T*>(GListBase::first()); }

    /// The next item; null at the end, and after a failed check.
    T* next() { return static_cast<T*>(GListBase::next()); }

    /// Removes the first occurrence; false when the item is not in the list.
    bool remove(const T* item) {
        Node* const node = find(item);
        if (node == nullptr)
            return false;
        removeNode(node);
        return true;
    }

    /// Removes all items, and deletes those that the list owns.
    void clear() {
        while (d_head != nullptr)
            removeNode(d_head);
    }

private:
    void removeNode(Node* node) {
        T* const item = static_cast<T*>(unlink(node));
        if (d_ownsItems)
            delete item;
    }

    bool d_ownsItems = false;
};

} // namespace core
