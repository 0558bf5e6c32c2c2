#pragma once

#include "X11Connection.h"

#include <QList>
#include <QRect>
#include <QString>
#include <optional>

// RandR outputs looked up by their id, the identity a recording keeps for "its" display.
class X11Outputs {
public:
    struct Output {
        quint32 id = 0;
        QString name;
        QRect geometry; // in root-window pixels
    };

    explicit X11Outputs(X11Connection& connection);

    // The output with that id while it is connected and shows a picture (has a CRTC).
    std::optional<Output> find(quint32 outputId) const;
    // Every connected output with a picture, in RandR's order.
    QList<Output> list() const;

private:
    std::optional<Output> describe(quint32 outputId, quint32 configTimestamp) const;

    X11Connection& m_connection;
    bool m_hasRandr = false;
};
