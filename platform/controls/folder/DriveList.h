#pragma once

#include <QComboBox>

/// A list of the machine's drives to choose one from: the operator's own folder, then the volumes.
/// On show it is the folder where each begins. None is chosen at first.
///
/// QComboBox::currentIndexChanged() tells of each change, whoever made it.
class DriveList final : public QComboBox {
    Q_OBJECT
public:
    explicit DriveList(QWidget* parent = nullptr);

    /// The folder where the chosen drive begins, with "/" between folders; "" if none is chosen.
    [[nodiscard]] QString drive() const;
    /// Chooses the drive of a folder, the nearest above it if one drive lies in another; the first
    /// volume if it is in none. The folder itself need not be there.
    void setDriveOf(const QString& folder);
};
