#pragma once

#include <chrono>
#include <string>
#include <vector>

struct _XDisplay;

namespace companion::testing {

/// Reads back the input events of an X server, whichever window they go to: as delivered, by the RECORD extension,
/// and as requested, by raw events of the X Input extension. One thread.
class XRecorder {
public:
    /// Throws when the display or an extension is missing. Events from here on are kept.
    explicit XRecorder(const std::string& display);
    ~XRecorder();
    XRecorder(const XRecorder&) = delete;
    XRecorder& operator=(const XRecorder&) = delete;

    struct Event {
        std::string what;       ///< "press", "release", "motion", "keydown", "keyup".
        unsigned detail = 0;    ///< Button or keycode; 0 for a motion.
        int x = 0;              ///< Root pixels, as delivered: held to the screen.
        int y = 0;              //
        unsigned state = 0;     ///< Buttons and modifiers held before the event.
        unsigned long time = 0; ///< The server's milliseconds.
    };

    /// Everything that the server has processed by now, oldest first, and forgets it.
    std::vector<Event> take();

    /// The same as one line: "motion 5,7 press1 5,7 release1 5,7 keydown50 5,7".
    std::string takeText();

    /// The pixels that motions asked for since the last call, before they were held to the screen: "5,7 -3,40000".
    std::string takeRequestedMotions();

private:
    void record(const unsigned char* wireEvent);
    void startRecord();
    void startRaw();
    void readUntilMarker();

    _XDisplay* m_control;
    _XDisplay* m_data;
    _XDisplay* m_raw;
    unsigned long m_context = 0;
    unsigned m_markerKeycode = 0;
    bool m_isReady = false;
    int m_markers = 0;
    std::vector<Event> m_events;
};

} // namespace companion::testing
