#pragma once

class QWidget;
class TDM_InternalData;

// actRegenerateThumbs: makes the thumbnails of every item of qDS_Items as it stands (filter and
// order applied) again, on a worker with its own connection, behind a progress dialog that stays
// responsive and can be cancelled. The bound controls are suspended meanwhile and the items read
// again at the end. A photo that does not decode leaves that item as it was; the first such error
// is raised at the end, after everything else was done.
void RegenerateThumbs(TDM_InternalData& data, QWidget* window);
