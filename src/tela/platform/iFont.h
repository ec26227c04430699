// iFont: a live font. Measuring and drawing text arrive with the text subsystem.
#pragma once

#include "tela/core/Ptr.h"

class iFont : public iObject {
public:
    virtual int height() const = 0;
};
