#include "frmMainEditors.h"

#include "dmInternalData.h"
#include "frmEdit.h"
#include "frmMints.h"
#include "uEditDataController.h"

#include <QAction>
#include <QApplication>

void ShowItemEditor(TDM_InternalData& data, QWidget* owner, const TEditRowList* rows,
                    const std::function<void(int)>& onRecordFocused)
{
    if (!data.Connected()) {
        return;
    }
    TDatasetDataController controller(*data.qDS_Items, rows);
    controller.SetOnRecordFocused(onRecordFocused);
    TORVEditForm editor(data, owner);
    editor.SetDataController(&controller);
    editor.exec();
    // Every way out posts or cancels; a record still open (a failure on the way) is dropped.
    if (controller.IsEditing()) {
        controller.Cancel();
    }
}

void ConnectMintsCommands(TDM_InternalData& data, QWidget* mainWindow, QAction* actEditMints)
{
    // The mint box's button of the repository runs this command too; opened over the item
    // editor, the window belongs to it.
    QObject::connect(actEditMints, &QAction::triggered, mainWindow, [&data, mainWindow] {
        QWidget* owner = QApplication::activeModalWidget();
        ShowMintsDialog(data, owner ? owner : mainWindow);
    });
}
