#pragma once

#include <QTest>

// One row of a data table, QTest::newRow(tag) << values..., written as one call so that a row
// stays on one line.
template <typename... T> void AddRow(const char* tag, const T&... values)
{
    (QTest::newRow(tag) << ... << values);
}
