#include "uGridSelection.h"

#include <algorithm>

bool TGridSelection::set(int row, bool selected)
{
    if (row < 0)
        return false;
    if (std::size_t(row) >= m_bits.size()) {
        if (!selected)
            return false;
        m_bits.resize(std::size_t(row) + 1, false);
    }
    auto bit = m_bits[std::size_t(row)];
    if (bit == selected)
        return false;
    bit = selected;
    m_count += selected ? 1 : -1;
    return true;
}

void TGridSelection::clear()
{
    std::fill(m_bits.begin(), m_bits.end(), false);
    m_count = 0;
}

std::vector<int> TGridSelection::rows() const
{
    std::vector<int> result;
    result.reserve(std::size_t(m_count));
    for (std::size_t i = 0; i < m_bits.size() && result.size() < std::size_t(m_count); ++i)
        if (m_bits[i])
            result.push_back(int(i));
    return result;
}

void TGridSelection::resize(int rows)
{
    if (rows < int(m_bits.size())) {
        m_count -= int(std::count(m_bits.begin() + rows, m_bits.end(), true));
        m_bits.resize(std::size_t(rows));
    } else if (m_count > 0) {
        m_bits.resize(std::size_t(rows), false);
    }
}

void TGridSelection::insertRows(int first, int count)
{
    if (count <= 0 || std::size_t(first) > m_bits.size())
        return;
    m_bits.insert(m_bits.begin() + first, std::size_t(count), false);
}

void TGridSelection::removeRows(int first, int count)
{
    if (count <= 0 || std::size_t(first) >= m_bits.size())
        return;
    const auto begin = m_bits.begin() + first;
    const auto end = m_bits.begin() + std::min<std::size_t>(m_bits.size(), std::size_t(first + count));
    m_count -= int(std::count(begin, end, true));
    m_bits.erase(begin, end);
}

void TGridSelection::moveRows(int first, int last, int to)
{
    const int count = last - first + 1;
    const int needed = std::max(last, to + count - 1) + 1;
    if (count <= 0 || first == to || m_count == 0)
        return;
    if (int(m_bits.size()) < needed)
        m_bits.resize(std::size_t(needed), false);
    if (to < first)
        std::rotate(m_bits.begin() + to, m_bits.begin() + first, m_bits.begin() + last + 1);
    else
        std::rotate(m_bits.begin() + first, m_bits.begin() + last + 1, m_bits.begin() + to + count);
}
