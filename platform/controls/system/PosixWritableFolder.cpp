#include "controls/system/WritableFolder.h"

#include <QFileInfo>

bool mayWriteIn(const QString& folder) { return QFileInfo(folder).isWritable(); }
