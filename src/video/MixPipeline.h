#pragma once

#include "Error.h"
#include "GstPointers.h"

#include <QByteArray>
#include <QString>
#include <atomic>
#include <deque>
#include <optional>

// The GStreamer graph of the finishing step, run to its end on the calling thread:
//
//   filesrc → qtdemux ─ video_0 ───────────────────────────────────────────────────→ mp4mux → filesink
//   filesrc → qtdemux ─ audio_k → avdec_aac → audioconvert → audioresample → gather ─┐      ↑
//   (a reader for each audio track)     audiomixer (1/N) → queue → AAC → queue ─────┴──────┘
//
// Every kept track has a reader of its own, which passes the other tracks to a fakesink and waits
// only for its own: nothing piles up in memory however long the recording, and a track that starts
// late holds nothing back. The queues give mixing, encoding and muxing a thread each, and the decoded
// audio is gathered into tenths of a second, so that the encoder, the slowest part, never waits. With
// one audio track the track goes straight to the muxer; with none there is no audio branch. The video
// packets pass unchanged; only their times move back by the B-frames' reordering delay, which the
// fragmented input has no edit list to skip.
class MixPipeline {
public:
    // Where the header goes. Either way it ends up in front of the media data.
    enum class Header {
        Reserved, // space for it is kept at the front and it is written there at the end: one pass
        Copied, // it is written first and the media data copied after it from a work file
    };

    MixPipeline(QString input, QString output, int audioTracks, double durationSeconds, Header header);
    ~MixPipeline();

    MixPipeline(const MixPipeline&) = delete;
    MixPipeline& operator=(const MixPipeline&) = delete;

    // Builds and runs the graph. Leaves the output (and the muxer's work file) behind only on success.
    std::optional<Error> run();

private:
    // One reader's demuxer hands its track named `track` to the pad `input`; other tracks are dropped.
    struct Route {
        MixPipeline* pipeline;
        QByteArray track;
        GstPadPtr input; // where the track goes
    };

    std::optional<Error> build();
    GstElement* add(const char* factory);
    bool addReader(const QByteArray& track, GstPadPtr input);
    bool buildAudio(GstPadPtr muxerPad);
    std::optional<Error> wait();
    void removeOutputs() const;
    static void onDemuxedPad(GstElement* demuxer, GstPad* pad, gpointer route);
    static GstPadProbeReturn onVideoSegment(GstPad* pad, GstPadProbeInfo* info, gpointer);
    static GstPadProbeReturn onFirstPicture(GstPad* pad, GstPadProbeInfo* info, gpointer);
    static GstPadProbeReturn onVideoData(GstPad* pad, GstPadProbeInfo* info, gpointer self);

    QString m_input;
    QString m_output;
    QString m_workFile;
    int m_audioTracks;
    double m_durationSeconds;
    Header m_header;
    GstElementPtr m_pipeline;
    std::deque<Route> m_routes; // a deque: the demuxers hold pointers to its elements
    std::atomic<int> m_videoPictures { 0 };
};
