#pragma once

#include "CaptureSession.h"

#include <QString>

// The GStreamer pipeline of a recording, as a launch description, and the names of the elements the
// session talks to. Paths and device names are set on the elements afterwards, never in the text.
class RecordingPipeline {
public:
    static constexpr const char* videoSource = "video_source";
    static constexpr const char* muxer = "mux";
    static constexpr const char* fileSink = "file";
    // A desktop's stream that has been quiet for this long repeats its last frame.
    static constexpr int keepAliveMs = 100;
    // The encoder's distance between key frames.
    static constexpr int keyFrameSeconds = 8;
    // Audio sources are named "audio_source0", "audio_source1", … in track order.
    static QString audioSource(int index);

    // ximagesrc (no damage tracking, the pointer as asked, the region by coordinates or the window by
    // id), or pipewiresrc on the desktop's stream made constant-rate and cut to the region, → the
    // chosen frame rate → scaled with borders to the frame size → H.264; one AAC track per
    // audio option (48 kHz stereo); all into a fragmented MP4 of about one fragment a second. Audio
    // sources never provide the clock, and the audio queues hold far more than the encoder's delay.
    //
    // A fragmented MP4 from GStreamer's muxer starts every track at zero and has no edit lists, so the
    // tracks are made to start at zero themselves: audio is filled with silence from the start (and
    // across any drop-out) and the first picture is stretched back to the start (see the session).
    // Only the encoder's B-frames still shift the pictures in this file, by their reordering delay of
    // two frames (67 ms at 30 fps, 33 ms at 60): the finishing step takes that back with an edit list,
    // so that only a recording that was never finished shows its pictures that much late.
    static QString describe(const CaptureRequest& request);

    // The parts of the video branch, for benchmarks as much as for describe(): the request's source
    // as raw I420 pictures of its frame size, of which the conversion from any raw video is the last
    // part (both end in " ! "), and the H.264 encoder for them (ending in h264parse).
    static QString pictures(const CaptureRequest& request);
    static QString conversion(const CaptureRequest& request);
    static QString encoder(const CaptureRequest& request);

    // The audio tracks in order: true for system audio (the default output's monitor), false for the
    // microphone.
    static QList<bool> audioTracks(const VideoOptions& options);
};
