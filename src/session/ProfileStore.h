// SPDX-License-Identifier: GPL-3.0-or-later
//
// The store of display settings: integers and texts by section and key. A seam: a settings file or
// the registry in the program, memory in tests.
#pragma once

#include <map>
#include <string>
#include <utility>

namespace qor {

class CProfileStore {
  public:
    virtual ~CProfileStore() = default;
    /// The stored integer, or `absent` when the key is not there.
    virtual int ReadInteger(const std::string& section, const std::string& key,
                            int absent) const = 0;
    virtual std::string ReadText(const std::string& section, const std::string& key) const = 0;
    virtual void WriteInteger(const std::string& section, const std::string& key, int value) = 0;
    virtual void WriteText(const std::string& section, const std::string& key,
                           const std::string& value) = 0;
};

/// A store that forgets with the process.
class CMemoryProfileStore : public CProfileStore {
  public:
    int ReadInteger(const std::string& section, const std::string& key, int absent) const override;
    std::string ReadText(const std::string& section, const std::string& key) const override;
    void WriteInteger(const std::string& section, const std::string& key, int value) override;
    void WriteText(const std::string& section, const std::string& key,
                   const std::string& value) override;

  protected:
    std::map<std::pair<std::string, std::string>, std::string> Values;
};

} // namespace qor
