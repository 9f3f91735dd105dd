#include "documents/text_buffer.h"

namespace tqm
{

TextBuffer::TextBuffer(Sink sink)
    : sink_(std::move(sink)), memory_(std::make_unique_for_overwrite<char[]>(usual_size + blanks.size())),
      next_(memory_.get()), end_(next_ + usual_size)
{
}

void TextBuffer::make_room(std::size_t at_least)
{
    flush();
    if (at_least > room()) {
        memory_ = std::make_unique_for_overwrite<char[]>(at_least + blanks.size());
        next_ = memory_.get();
        end_ = next_ + at_least;
    }
}

bool TextBuffer::flush()
{
    good_ = good_ && sink_({memory_.get(), static_cast<std::size_t>(next_ - memory_.get())});
    next_ = memory_.get();
    return good_;
}

} // namespace tqm
