#pragma once

class AppModel;

// Keeps the output window on the projector in step with the model.
// (Filled in by the output window work.)
class OutputWindowController {
public:
    virtual ~OutputWindowController() = default;
};
