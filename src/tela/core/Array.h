// Array: an owning array of records, optionally kept sorted by the records'
// own comparison. ArrayRec is the base of what it holds.
//
// Invariants
// - Every element was given to add() and is deleted by the array: on remove(),
//   and when the array goes.
// - While sorted(true) is in force, elements stand in ascending compare()
//   order, so find() is a binary search. Equal records keep the order they
//   were added in.
//
// Not thread-safe: its owner guards it.
#pragma once

#include "tela/core/GrowString.h"
#include "tela/core/Memory.h"

#include <cstddef>

class ArrayRec : public Qv::HeapObject {
public:
    virtual ~ArrayRec() = default;
    // Negative, zero or positive as this record orders before, with or after `other`.
    virtual int compare(const ArrayRec& other) const = 0;
    virtual bool equals(const ArrayRec& other) const { return compare(other) == 0; }
    virtual bool lessThan(const ArrayRec& other) const { return compare(other) < 0; }
    // Appends a readable form of the record, for reports.
    virtual void toString(GrowString& out) const = 0;
};

class Array {
public:
    Array() = default;
    ~Array() { clear(); }
    Array(const Array&) = delete;
    Array& operator=(const Array&) = delete;

    // Turning sorting on sorts what is there.
    void sorted(bool keepSorted);
    bool sorted() const { return m_sorted; }

    // Takes ownership. Sorted: placed after any equal records; otherwise last.
    // Returns the index it went to; null is refused with -1.
    int add(ArrayRec* record);
    // The index of a record that compares equal to `probe`, or -1. A linear
    // walk while unsorted.
    int find(const ArrayRec& probe) const;
    // Deletes the record at `index`; an index out of range is ignored.
    void remove(std::size_t index);
    void clear();

    std::size_t size() const { return m_records.size(); }
    ArrayRec* operator[](std::size_t index) const { return index < m_records.size() ? m_records[index] : nullptr; }

private:
    Qv::Vector<ArrayRec*> m_records;
    bool m_sorted = false;
};
