#pragma once

#include <QHash>
#include <QWidget>

#include <functional>

class QAction;
class QToolBar;

/// The tools above what a window shows, in groups, in as many rows as the width needs. Each has its
/// key, which works anywhere in the window and which its tool-tip names.
class ToolStrip final : public QWidget {
    Q_OBJECT
public:
    using Work = std::function<void()>;

    struct Tool {
        const char* name; ///< and icon
        const char* text; ///< beside the icon; "" for none
        const char* tip;
        const char* key;
        Work work;
        const char* toldKey = nullptr; ///< where the window itself takes the key: `key` is "" then
    };

    /// @param window where the keys work
    /// @param shown gets the focus of a tool for which there is no more to do
    ToolStrip(QWidget& window, QWidget& shown);

    [[nodiscard]] QToolBar& addGroup(const char* name);
    void add(QToolBar& group, const Tool& tool);
    /// A key without a tool.
    void addKey(const QKeySequence& key, const Work& work);
    void setToolEnabled(const QString& name, bool enabled);

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    QWidget& window_;
    QWidget& shown_;
    QHash<QString, QAction*> actions_;
};
