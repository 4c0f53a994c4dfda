#pragma once

#include <functional>

class QAction;
class QWidget;
class TDM_InternalData;
class TEditRowList;

// The record editors as the main window opens them.

// Shows the item editor modally on the current record of qDS_Items (appended or not), walking the
// given rows of the active view (nullptr: the dataset's order). onRecordFocused tells the view
// each record the editor moves to.
void ShowItemEditor(TDM_InternalData& data, QWidget* owner, const TEditRowList* rows = nullptr,
                    const std::function<void(int record)>& onRecordFocused = {});

// Connects the main window's actEditMints (also run by the button of the mint box) to the mints
// window, opened over the modal window in front if there is one.
void ConnectMintsCommands(TDM_InternalData& data, QWidget* mainWindow, QAction* actEditMints);
