// Files dragged out of the application: paths and holders reach the window
// in order, and the mouse state is forgotten after the drag.
#include "input/RootWindowFixture.h"

#include "tela/input/FileDrag.h"

namespace {

// A holder whose file is only named when the drag asks for it.
class LateFile final : public iFileHolder {
public:
    WString getFilename() const override
    {
        ++asked;
        return WString(u"/tmp/made-late.txt");
    }
    mutable int asked = 0;
};

using FileDrag = RootWindowFixture<>;

} // namespace

TEST_F(FileDrag, PathsAndHoldersReachTheWindowAndTheMouseIsReset)
{
    Canvas* c = child(0, 0, 100, 100);
    mouse_canvas_connect(c); // as if a press had captured the mouse
    Tela::dragFilesToOS(std::vector<WString>{WString(u"/a.txt"), WString(u"/b.txt")});
    ASSERT_EQ(window->draggedFiles().size(), 2u);
    EXPECT_EQ(window->draggedFiles()[0], WString(u"/a.txt"));
    EXPECT_EQ(window->draggedFiles()[1], WString(u"/b.txt"));
    EXPECT_EQ(mouse_canvas(), nullptr);

    const Qv::Ptr<LateFile> late = Qv::make<LateFile>();
    Tela::dragFilesToOS(std::vector<Qv::Ptr<iFileHolder>>{
        Qv::make<Tela::SimpleFileHolder>(WString(u"/c.txt")), nullptr, late});
    ASSERT_EQ(window->draggedFiles().size(), 2u); // the null holder is left out
    EXPECT_EQ(window->draggedFiles()[0], WString(u"/c.txt"));
    EXPECT_EQ(window->draggedFiles()[1], WString(u"/tmp/made-late.txt"));
    EXPECT_EQ(late->asked, 1);
    tela_deletecanvas(c);
}
