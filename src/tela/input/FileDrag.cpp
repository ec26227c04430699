#include "tela/input/FileDrag.h"

#include "tela/canvas/Canvas.h"
#include "tela/core/Memory.h"
#include "tela/input/MouseState.h"
#include "tela/state/TelaState.h"

void Tela::dragFilesToOS(const std::vector<LightweightString<wchar_t>>& paths)
{
    std::vector<Qv::Ptr<iFileHolder>> files;
    files.reserve(paths.size());
    for (const WString& path : paths)
        files.push_back(Qv::make<SimpleFileHolder>(path));
    dragFilesToOS(files);
}

void Tela::dragFilesToOS(const std::vector<Qv::Ptr<iFileHolder>>& files)
{
    Canvas* root = tela_rootcanvas();
    if (!root || !root->window)
        return;
    // The window layer takes the paths in the library's own container.
    Qv::Vector<WString> paths;
    paths.reserve(files.size());
    for (const Qv::Ptr<iFileHolder>& file : files)
        if (file)
            paths.push_back(file->getFilename());
    root->window->dragFiles(paths); // blocks for the whole drag
    tela_resetMouse();
}
