#pragma once

#include <QLayout>

#include <memory>
#include <vector>

/// Groups of tools beside each other, in as many rows as the width needs.
class ToolRows final : public QLayout {
    Q_OBJECT
public:
    explicit ToolRows(QWidget* parent);
    ~ToolRows() override;

    void addItem(QLayoutItem* item) override;
    [[nodiscard]] int count() const override;
    [[nodiscard]] QLayoutItem* itemAt(int index) const override;
    QLayoutItem* takeAt(int index) override;
    [[nodiscard]] QSize sizeHint() const override;
    /// As wide as the widest group.
    [[nodiscard]] QSize minimumSize() const override;
    [[nodiscard]] bool hasHeightForWidth() const override { return true; }
    [[nodiscard]] int heightForWidth(int width) const override;
    void setGeometry(const QRect& rect) override;

private:
    /// @return how high the rows are
    [[nodiscard]] int arrange(const QRect& rect, bool move) const;

    std::vector<std::unique_ptr<QLayoutItem>> groups_;
};
