// SPDX-License-Identifier: GPL-3.0-or-later
//
// The session log and the comments, apart from their windows: stamped lines, newest last, no more
// than a window can scroll through. The text is the session log's; comments are its lines that
// AddComment has made.
#pragma once

#include "views/View.h"

#include <string>
#include <string_view>

namespace qor {

class CLinesView : public CView {
  public:
    static constexpr std::size_t MostLines = 2000;

    /// Shows every line, or comments alone.
    explicit CLinesView(bool onlyComments);

    /// It is of the whole session, whatever the name.
    void Show(const std::string&) override {}
    bool Refresh(CQorViewDoc& doc) override;
    ViewPages Pages() const override { return {&Grid}; }
    Menu ContextMenu(CQorViewDoc&) override { return {}; }

  private:
    void BeginDay(const std::string& day);
    void AddLine(std::string_view line);

    bool OnlyComments;
    bool InComment = false; ///< a line that goes on belongs to one
    std::size_t Read = 0;
    std::uint64_t Lines = 0;
    std::string Day; ///< of the last line
    GridPage Grid;
};

/// Puts an operator's comment into the session log; `at` is when its key was pressed.
void AddComment(CQorViewDoc& doc, std::string_view text, const FrameTime& at);

} // namespace qor
