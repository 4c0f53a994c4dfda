#pragma once

#include <QVariant>

#include <memory>
#include <vector>

// One group of a grouped view: a run [Begin, End) of the view's row order that shares the key of
// its level, with its sub-groups (none at the deepest level, where the rows themselves are the
// children) and its summary values. The root covers every row and has level -1.
struct TGridGroupNode
{
    TGridGroupNode* Parent = nullptr;
    int Level = -1;
    int Row = 0;         // index among the parent's children
    quint32 KeyRank = 0; // rank of the key in the level's key column (as built)
    QVariant Key;        // the key itself
    int Begin = 0;
    int End = 0;
    bool Expanded = false;
    // Rows this node shows in a view: its own group row (none for the root) and, while expanded,
    // its children and its footer.
    int DisplayCount = 0;
    // Display offset of each child within this node's shown children.
    std::vector<int> ChildOffsets;
    std::vector<std::unique_ptr<TGridGroupNode>> Children;
    std::vector<QVariant> Summaries; // one per group summary item

    int rowCount() const { return End - Begin; }
};
