#include "frmMainThumbs.h"

#include "dmInternalData.h"
#include "uDBDataset.h"
#include "uThumbRegenerator.h"
#include "uThumbnail.h"
#include "uZTStrings.h"
#include "uZTTypes.h"

#include <QProgressDialog>

using namespace Qt::StringLiterals;

namespace {

QString ProgressText(int done, int total)
{
    const QString format = GetText(u"cSRegeneratingThumbsFmt"_s);
    return FormatText(format.isEmpty() ? u"Regenerating thumbnails: %d of %d"_s : format, {done, total});
}

} // namespace

void RegenerateThumbs(TDM_InternalData& data, QWidget* window)
{
    TDBDataset* items = data.qDS_Items;
    if (!items || items->state() == TDatasetState::Inactive || data.DatabasePath.isEmpty())
        return;
    items->checkBrowseMode();
    const QList<TThumbJob> jobs = ThumbJobsOf(*items);
    if (jobs.isEmpty())
        return;

    TThumbRunResult result;
    {
        TDisableControlsScope suspended(*items);
        TThumbRegenerator regenerator(data.DatabasePath, jobs);
        QProgressDialog progress(window);
        progress.setObjectName(u"dlgRegenerateThumbs"_s);
        progress.setWindowTitle(GetText(u"cSMainactRegenerateThumbs"_s));
        progress.setWindowModality(Qt::WindowModal);
        progress.setMinimumDuration(0);
        progress.setAutoClose(false);
        progress.setAutoReset(false);
        progress.setRange(0, int(jobs.size()));
        progress.setValue(0);
        progress.setLabelText(ProgressText(0, int(jobs.size())));
        QObject::connect(&progress, &QProgressDialog::canceled, &regenerator, &TThumbRegenerator::Cancel);
        QObject::connect(&regenerator, &TThumbRegenerator::Progress, &progress,
                         [&progress](int done, int total) {
                             progress.setValue(done);
                             progress.setLabelText(ProgressText(done, total));
                         });
        QObject::connect(&regenerator, &TThumbRegenerator::Finished, &progress, &QProgressDialog::accept);
        regenerator.Start();
        progress.exec();
        regenerator.Cancel(); // closed by other means: stop as well
        regenerator.Wait();
        result = regenerator.Result();
        // The new thumbnails come with the rows read again; the cursor stays on its item.
        items->refresh();
    }
    if (!result.FirstError.isEmpty())
        throw EThumbnailError(result.FirstError.toStdString());
}
