#include "tela/text/Typeface.h"

#include <utility>

Typeface::Typeface(String typefaceName, unsigned int typefaceSize, bool first, bool second, double factorValue)
    : name(std::move(typefaceName)), size(typefaceSize), flag1(first), flag2(second), factor(factorValue)
{
    init();
}

void Typeface::init()
{
    slot = Qv::Ptr<iObject>();
    reserved1 = 0;
    reserved2 = 0;
    colour = Colour();
    flag3 = false;
    value = 0;
    secondColour = Colour();
    flag4 = true;
    offset = XY<double>(2.0, 2.0);
}
