#pragma once

#include <string>
#include <vector>

namespace tavlo::scene {

/// Finds the files that a scene names. Paths are UTF-8. Frame thread.
class FileUtils
{
public:
    /// Later ones are searched later; one that is there already stays where it is.
    void addSearchPath(const std::string& folder);
    const std::vector<std::string>& searchPaths() const { return _folders; }

    /// The first of a relative name below a search path, else the file as it is named; empty when there is none.
    std::string fullPathForFilename(const std::string& name) const;
    bool isFileExist(const std::string& name) const { return !fullPathForFilename(name).empty(); }

private:
    std::vector<std::string> _folders;
};

} // namespace tavlo::scene
