#ifndef VLK_DOUBLE_LINK_H
#define VLK_DOUBLE_LINK_H

/// The foundation's intrusive doubly linked list: a head that is its own sentinel and a base class of the linked
/// objects. Nothing is allocated, nothing is owned, and nothing is locked: the list belongs to one thread or to
/// whoever holds its lock.
namespace VLK::Misc {

template <class T>
class TDoubleLinkHead;

/// Base of an object that can stand in one list at a time. It leaves its list when it is destroyed.
template <class T>
class TDoubleLinkedObject {
public:
    TDoubleLinkedObject(TDoubleLinkedObject const &) = delete;
    TDoubleLinkedObject & operator=(TDoubleLinkedObject const &) = delete;

    /// Takes the object out of the list that it stands in; without one nothing happens.
    void Unlink() noexcept
    {
        m_pNext->m_pPrev = m_pPrev;
        m_pPrev->m_pNext = m_pNext;
        m_pNext = m_pPrev = this;
    }
    bool IsLinked() const noexcept { return m_pNext != this; }

protected:
    TDoubleLinkedObject() noexcept : m_pNext(this), m_pPrev(this) {}
    ~TDoubleLinkedObject() { Unlink(); }

private:
    friend class TDoubleLinkHead<T>;
    TDoubleLinkedObject * m_pNext;
    TDoubleLinkedObject * m_pPrev;
};

/// A list of objects derived from TDoubleLinkedObject<T>. Objects still in it when it ends are unlinked.
template <class T>
class TDoubleLinkHead : private TDoubleLinkedObject<T> {
    using CLink = TDoubleLinkedObject<T>;

public:
    TDoubleLinkHead() noexcept = default;
    ~TDoubleLinkHead() { Clear(); }

    bool IsEmpty() const noexcept { return this->m_pNext == this; }
    /// The oldest and the newest object; null when the list is empty.
    T * First() const noexcept { return ObjectOf(this->m_pNext); }
    T * Last() const noexcept { return ObjectOf(this->m_pPrev); }
    /// The neighbour of an object of this list; null at the end.
    T * Next(T const & object) const noexcept { return ObjectOf(LinkOf(object).m_pNext); }
    T * Previous(T const & object) const noexcept { return ObjectOf(LinkOf(object).m_pPrev); }

    /// Puts the object at an end of this list; it leaves the list that it stood in.
    void AddLast(T & object) noexcept { Insert(object, *this->m_pPrev); }
    void AddFirst(T & object) noexcept { Insert(object, *this); }

    /// Unlinks all objects.
    void Clear() noexcept
    {
        while (!IsEmpty())
            this->m_pNext->Unlink();
    }

private:
    static CLink const & LinkOf(T const & object) noexcept { return object; }
    T * ObjectOf(CLink * link) const noexcept { return link == this ? nullptr : static_cast<T *>(link); }

    void Insert(T & object, CLink & after) noexcept
    {
        CLink & link = object;
        CLink * const place = &after == &link ? link.m_pPrev : &after; // already there: it stays
        link.Unlink();
        link.m_pPrev = place;
        link.m_pNext = place->m_pNext;
        place->m_pNext->m_pPrev = &link;
        place->m_pNext = &link;
    }
};

} // namespace VLK::Misc

#endif
