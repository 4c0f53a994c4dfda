#pragma once

#include "uZTMessages.h"

// Shows the boxes of MessageDlgZT as QMessageBox, centred over the active window. Install one at
// start: SetMessagePresenter(&presenter).
class TWidgetMessagePresenter : public TMessagePresenter
{
public:
    int Present(const TMessageBoxRequest& request) override;
};
