#pragma once

#include <QAccessibleInterface>
#include <QPointer>

class RegionSelectionWindow;

// The region overlay as assistive technology (AT-SPI) sees it: a window of its own, named, whose
// description says what to do and what is lit. A plain QWindow has no accessible object at all, so
// without this a screen reader would not know the overlay holds the screen.
class RegionSelectionAccessible : public QAccessibleInterface {
public:
    explicit RegionSelectionAccessible(RegionSelectionWindow* window);

    // Lets Qt make one for every overlay window (once per program).
    static void install();

    bool isValid() const override;
    QObject* object() const override;
    QWindow* window() const override;
    QAccessibleInterface* parent() const override;
    QAccessibleInterface* child(int index) const override;
    int childCount() const override;
    int indexOfChild(const QAccessibleInterface* child) const override;
    QAccessibleInterface* childAt(int x, int y) const override;
    QString text(QAccessible::Text type) const override;
    void setText(QAccessible::Text type, const QString& text) override;
    QRect rect() const override;
    QAccessible::Role role() const override;
    QAccessible::State state() const override;

private:
    QPointer<RegionSelectionWindow> m_window;
};
