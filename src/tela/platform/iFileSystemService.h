// iFileSystemService: file tests, the application's name, the path separator.
#pragma once

#include "tela/core/LightweightString.h"

class iFileSystemService {
public:
    virtual bool isDirectory(const WString& path) = 0;
    virtual WString applicationName() = 0;
    virtual char16_t pathSeparator() = 0;
protected:
    ~iFileSystemService() = default;
};
