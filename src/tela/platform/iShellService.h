// iShellService: desktop integration.
#pragma once

#include "tela/core/LightweightString.h"

class iShellService {
public:
    virtual bool revealFile(const WString& path) = 0;
    virtual bool viewDocument(const WString& path) = 0;
    virtual bool userPicturesFolder(WString& out, int flags) = 0;
    virtual int messageBox(const WString& title, const WString& text, int buttons, int icon) = 0;
protected:
    ~iShellService() = default;
};
