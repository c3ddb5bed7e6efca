#pragma once

#include "TavloFaceLandmark/ITavloFaceLandmark.h"
#include "base/CTempldateHelper.h"
#include "drawing/TavloDrawDX11.h"

#include <QPointF>

#include <vector>

/// Finds a face in a channel's picture, on a small copy of it.
///
/// The copy of one frame is looked at in a later one, when it has arrived: the frame thread does not wait for it.
/// Without the analyser's module no face is ever found. Frame thread; the analysis takes its time there.
class TavloFaceLandmarkProcessor final : public TavloDrawDX11
{
public:
    TavloFaceLandmarkProcessor();
    ~TavloFaceLandmarkProcessor() override;

    /// \param frameSize    of the pictures, pixels
    /// \param modelFolder  of the analyser, with its separator
    bool createProcessor(ITavloGraphicsRes* graphicsRes, tavlo::graphics::DevicePtr device,
                         tavlo::graphics::ContextPtr context, QSizeF frameSize, const QString& modelFolder);
    void destroy() override;

    /// Looks at the picture of a few frames ago, and has this one copied.
    void process(const tavlo::graphics::TexturePtr& picture);

    /// Whether a face was in the picture that was looked at last.
    bool isFound() const { return !_landmarks.empty(); }

    /// In the frame, pixels, y down; nothing for an index without a landmark.
    std::optional<QPointF> landmark(int index) const;

private:
    bool loadAnalyser();
    void analyse();

    tavlo::graphics::TexturePtr _stagingTexture;
    tavlo::graphics::Fence _copied; ///< behind the copy that is under way
    bool _copying = false;
    QSizeF _frameSize;
    double _scale = 1.0; ///< from the small copy to the frame
    QString _modelFolder;
    CTempldateHelper<ITavloFaceLandmark> _analyser;
    bool _analyserAsked = false;
    std::vector<QPointF> _landmarks; ///< in the frame; empty without a face
};
