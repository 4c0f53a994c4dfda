#pragma once

#include <vector>

// The selected rows of a view, one bit per source row, kept in step with the source's inserts,
// removes and moves so that a selection outlives regrouping, sorting, filtering and the view
// being out of sight.
class TGridSelection
{
public:
    int count() const { return m_count; }
    bool isEmpty() const { return m_count == 0; }
    bool contains(int row) const
    {
        return row >= 0 && std::size_t(row) < m_bits.size() && m_bits[std::size_t(row)];
    }
    // Returns true when the row's state changed.
    bool set(int row, bool selected);
    void clear();
    // Source rows, ascending.
    std::vector<int> rows() const;

    void resize(int rows);
    void insertRows(int first, int count);
    void removeRows(int first, int count);
    // Rows first..last now start at `to` (row numbers after the move).
    void moveRows(int first, int last, int to);

private:
    std::vector<bool> m_bits;
    int m_count = 0;
};
