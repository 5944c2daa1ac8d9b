// SPDX-License-Identifier: GPL-3.0-or-later
//
// The session as a thing of its own: begun, opened from its file, saved, closed, and whether it was
// changed since. The document owns this room. Called on the thread that commands the document,
// without its lock; while a log is open the operator is asked, or nobody can be and it is refused.
// Operations give what was wrong as one line, empty when they were done.
#pragma once

#include "session/KeptSession.h"
#include "session/Refusal.h"

#include <string>
#include <vector>

namespace qor {

class CQorViewDoc;
class CSessionSetup;

/// What became of opening a session.
struct SessionOpening {
    std::string refusal;               ///< why it was not opened; then nothing of it is applied
    std::vector<std::string> warnings; ///< of the file, a line each
    std::vector<Refusal> refused;      ///< could not be opened; the rest stands
    std::vector<Refusal> repaired;     ///< is used and yet may not be what was meant

    bool Opened() const { return refusal.empty(); }
};

class CSessionDocument {
  public:
    /// The document that it is a part of.
    explicit CSessionDocument(CQorViewDoc& doc) : Doc(doc) {}

    /// An empty session, with the application's settings of the session log.
    std::string NewSession();
    /// The file becomes the session, instead of the one that was there. A file that is faulty as a
    /// whole leaves everything as it was.
    SessionOpening OpenSession(const std::string& path);
    /// The same from records, whose file is `path`, or none; `setup` hears what could not be used.
    std::string OpenSession(const SessionRecord& session, const std::string& path,
                            CSessionSetup& setup);
    /// Writes the session's file; its paths are relative to where that is.
    std::string SaveSession(const std::string& path);
    /// Removes everything, and ends the log.
    std::string CloseSession();

    SessionRecord Record() const;
    /// Whether saving would give another file than the one that was opened or saved last, or than
    /// that of a new session.
    bool Changed() const;
    /// No file has this session as it is: it was restored from a copy.
    void NoteUnsaved() { SavedBytes.clear(); }

    /// Empty: never saved.
    const std::string& Path() const { return FilePath; }
    const std::string& Title() const { return Kept.title; }
    std::string SetTitle(const std::string& title);
    /// Objects of the desktop, kept as they are.
    const JsonValue& Windows() const { return Kept.windows; }
    void SetWindows(JsonValue windows);

  private:
    std::string EndLog();
    std::string Clear();
    void ReportRefusals(const CSessionSetup& setup);
    void NoteSaved(const std::string& path);

    CQorViewDoc& Doc;
    std::string FilePath;
    KeptSession Kept;
    std::string SavedBytes; ///< of the file as it is, or would be
};

} // namespace qor
