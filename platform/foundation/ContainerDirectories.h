// ContainerDirectories: where the program keeps its files. Everything lives
// under one data home: $QUILLMONT_HOME when set, else the XDG data folder's
// "quillmont". An application group (programs that share a store, such as
// the app and its widget) has a folder of its own below it; a program
// without a group uses a folder named after its executable. These functions
// only compute paths; they never create folders.
#pragma once

#include <filesystem>
#include <string_view>

namespace quillmont::ContainerDirectories {

/// $QUILLMONT_HOME when set and non-empty, else $XDG_DATA_HOME/quillmont
/// ($XDG_DATA_HOME defaults to $HOME/.local/share).
std::filesystem::path dataHome();

/// The folder shared by the programs of one application group.
std::filesystem::path groupContainer(std::string_view groupIdentifier);

/// The running program's own folder: dataHome()/<executable name>.
std::filesystem::path processContainer();

}  // namespace quillmont::ContainerDirectories
