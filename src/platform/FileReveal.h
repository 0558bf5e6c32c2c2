#pragma once

#include <QString>

// Shows a file to the user in the file manager.
class FileReveal {
public:
    virtual ~FileReveal() = default;
    virtual void reveal(const QString& path) = 0;
};
