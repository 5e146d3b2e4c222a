#pragma once

namespace zib {

/// Gives the application the look that every picture in words was taken with: the toolkit's own style and
/// colours, the plain font, which stands in for every other too, and a country without habits. To be called
/// before the first window.
void dressUp();

/// While it lives, the style measures but draws nothing, so that what is drawn is the program's own.
class StyleRest
{
public:
    StyleRest();
    ~StyleRest();
    StyleRest(const StyleRest&) = delete;
    StyleRest& operator=(const StyleRest&) = delete;
};

} // namespace zib
