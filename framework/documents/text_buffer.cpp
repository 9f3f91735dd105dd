#include "documents/text_buffer.h"

namespace tqm
{

TextBuffer::TextBuffer(Sink sink)
    : sink_(std::move(sink)), memory_(usual_size + blanks.size()), next_(memory_.data()), end_(next_ + usual_size)
{
}

void TextBuffer::make_room(std::size_t at_least)
{
    flush();
    if (at_least > room()) {
        memory_.resize(at_least + blanks.size());
        next_ = memory_.data();
        end_ = next_ + at_least;
    }
}

bool TextBuffer::flush()
{
    good_ = good_ && sink_({memory_.data(), static_cast<std::size_t>(next_ - memory_.data())});
    next_ = memory_.data();
    return good_;
}

} // namespace tqm
