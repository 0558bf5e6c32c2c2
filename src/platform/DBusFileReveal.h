#pragma once

#include "FileReveal.h"

// org.freedesktop.FileManager1.ShowItems on the session bus, which selects the file in a file
// manager window; without such a service, the folder is opened instead.
class DBusFileReveal : public FileReveal {
public:
    void reveal(const QString& path) override;
};
