#pragma once

#include "Error.h"
#include "GstPointers.h"

#include <QList>
#include <QString>
#include <atomic>
#include <optional>

// The GStreamer graph of the finishing step, run to its end on the calling thread:
//
//   filesrc → qtdemux ─ video_0 → queue ─────────────────────────────────────────→ mp4mux (faststart) →
//   filesink
//                     ├ audio_k → queue → decodebin → audioconvert → audioresample → audiomixer (1/N) → AAC ↗
//                     └ anything else → fakesink
//
// With one audio track the track goes straight to the muxer; with none there is no audio branch.
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
    std::optional<Error> build();
    GstElement* add(const char* factory);
    bool buildAudio(GstPad* muxerPad);
    std::optional<Error> wait();
    void removeOutputs() const;
    static void onDemuxedPad(GstElement* demuxer, GstPad* pad, gpointer self);
    static void onDecodedPad(GstElement* decoder, GstPad* pad, gpointer target);
    static GstPadProbeReturn onVideoData(GstPad* pad, GstPadProbeInfo* info, gpointer self);
    void routeDemuxedPad(GstPad* pad);

    QString m_input;
    QString m_output;
    QString m_workFile;
    int m_audioTracks;
    double m_durationSeconds;
    Header m_header;
    GstElementPtr m_pipeline;
    GstElement* m_videoInput = nullptr; // not owned: elements belong to the pipeline
    QList<GstElement*> m_audioInputs;
    int m_videoPads = 0;
    std::atomic<int> m_videoPictures { 0 };
};
