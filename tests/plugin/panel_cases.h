#pragma once

// One table of what a person does with the panel and what is seen then, for the headless layer and for a real Windows
// build alike.

#include <optional>
#include <string>
#include <vector>

namespace marrowfen::test {

struct PanelCase {
    std::string name;
    std::vector<std::string> steps;
    std::vector<std::string> seen;
    std::string host = {};                 // members of the scene file's "host"
    std::string layers = {};               // the scene's layers as JSON; its usual ones when left out
    std::optional<std::string> list = {};  // content of the node list
    bool refuseNewLayers = false;
};

// Steps:
//   left click, right click, deactivate, close      the plug-in and its panel; close is the panel's close box
//   press CONTROL                                   Export, Export DSQ, Add Node, About, or the check box: Animation
//   type TEXT                                       into the combo box
//   save as NAME, cancel                            what is answered to save dialogs from now on
//   look                                            notes what the panel shows
const std::vector<PanelCase>& panelCases();

// The case's scene file, in a host that is installed in this directory.
std::string sceneText(const PanelCase& panelCase, const std::string& directory);

}  // namespace marrowfen::test
