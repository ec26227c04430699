#include "tela/core/Array.h"

#include <algorithm>

void Array::sorted(bool keepSorted)
{
    m_sorted = keepSorted;
    if (m_sorted)
        std::stable_sort(m_records.begin(), m_records.end(),
                         [](const ArrayRec* a, const ArrayRec* b) { return a->lessThan(*b); });
}

int Array::add(ArrayRec* record)
{
    if (!record)
        return -1;
    auto at = m_records.end();
    if (m_sorted)
        at = std::upper_bound(m_records.begin(), m_records.end(), record,
                              [](const ArrayRec* a, const ArrayRec* b) { return a->lessThan(*b); });
    const auto index = at - m_records.begin();
    m_records.insert(at, record);
    return static_cast<int>(index);
}

int Array::find(const ArrayRec& probe) const
{
    if (!m_sorted) {
        for (std::size_t index = 0; index < m_records.size(); ++index)
            if (m_records[index]->equals(probe))
                return static_cast<int>(index);
        return -1;
    }
    const auto at = std::lower_bound(m_records.begin(), m_records.end(), &probe,
                                     [](const ArrayRec* a, const ArrayRec* b) { return a->lessThan(*b); });
    if (at == m_records.end() || !(*at)->equals(probe))
        return -1;
    return static_cast<int>(at - m_records.begin());
}

void Array::remove(std::size_t index)
{
    if (index >= m_records.size())
        return;
    ArrayRec* const record = m_records[index];
    m_records.erase(m_records.begin() + static_cast<std::ptrdiff_t>(index));
    delete record;
}

void Array::clear()
{
    // Taken out first: a record's destructor may report, and must find the
    // array already without it.
    Qv::Vector<ArrayRec*> records;
    records.swap(m_records);
    for (ArrayRec* record : records)
        delete record;
}
