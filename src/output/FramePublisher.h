#pragma once

class AppModel;

// Publishes the output picture as a live video source.
// (Filled in by the video source work.)
class FramePublisher {
public:
    virtual ~FramePublisher() = default;
};
