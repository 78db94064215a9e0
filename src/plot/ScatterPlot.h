#pragma once

#include "calc/Contours.h"
#include "calc/IsoelasticLine.h"
#include "plot/LiftableCurve.h"

#include <QBrush>
#include <QPalette>
#include <QPoint>
#include <QPolygonF>
#include <QString>
#include <array>
#include <map>
#include <qwt_plot.h>
#include <vector>

class QKeyEvent;
class QMouseEvent;
class QRubberBand;
class QWheelEvent;
class QwtPlotCurve;
class QwtPlotMarker;
class QwtPlotPanner;
class QwtPlotShapeItem;

namespace Tessaly {

class CurveOverlay;
class DataBoundsItem;
class RoundSpectroCurve;
class ScatterPlotPicker;

// The plot's own texts, for the widget and for its tests.
namespace ScatterPlotText {
inline constexpr char title[] = "Scatter Plot";
// Behind the modulus of an isoelastic line's label.
inline constexpr char modulusUnit[] = " kPa";
} // namespace ScatterPlotText

// How the plot looked before prepareForExport, so that restoreAfterExport can put it back.
struct ScatterPlotExportState
{
    struct Axis
    {
        bool canvasAligned = false;
        int canvasMargin = 0;
        bool visible = false;
        bool labels = true;
        bool ticks = true;
    };

    QBrush canvasBackground;
    QPalette palette;
    bool autoFillBackground = false;
    int canvasFrameStyle = 0;
    std::array<Axis, 4> axes; // by QwtPlot axis id
};

// The main scatter plot: the active dataset's events as points of two features, in one colour or
// coloured by a third value, with the selected event highlighted, density contours, isoelastic
// lines and polygon gates drawn over them. It computes no data: the caller hands it finished,
// finite vectors, and a point's index in them is its plot index.
class ScatterPlot : public QwtPlot
{
    Q_OBJECT

public:
    explicit ScatterPlot(QWidget* parent = nullptr);
    ~ScatterPlot() override;

    // Shows the points (x[i], y[i]), coloured by colors[i] when colors has their length, with a
    // colour bar on the right axis titled colorLabel. x and y of different lengths, or an empty x,
    // clear the plot. The zoom stays as it is.
    void setData(const std::vector<double>& x, const std::vector<double>& y, const QString& xLabel,
        const QString& yLabel, const std::vector<double>& colors = {}, const QString& colorLabel = {});
    // Empties the points, the colour bar, the highlight and the contours; the axes lose their titles
    // and return to a neutral range, so that an empty plot shows nothing of the last one.
    void clearData();

    // Marks one point; an index out of range hides the mark.
    void highlightPoint(int plotIndex);
    void clearHighlight();

    // The entry of the "Color &Map" menu for coloured points and the colour bar.
    void setColorMapIndex(int index);
    int currentColorMapIndex() const { return colorMapIndex; }

    // Scale mode of an axis (0 linear, 1 log, 2 pseudo-log); the axis goes back to auto scale. The
    // auto scale of a log axis spans the positive values only.
    void setAxisScaleMode(int axis, int mode);
    int axisScaleMode(int axis) const;
    // Auto scale on both data axes.
    void resetZoom();

    // Hides the points (contour mode "Only") or shows them again; the highlight is not affected.
    void setDataVisible(bool visible);
    bool isDataVisible() const { return !dataHidden; }

    // Contour lines in data units; the first level is dashed, the others solid.
    void setContours(const std::vector<ContourLevel>& levels);
    void clearContours();

    // Lines of equal modulus in data units of the two axes, optionally labelled at their last point.
    void setIsoelastics(const std::vector<IsoelasticLine>& lines, bool showLabels);
    void clearIsoelastics();

    // A polygon gate in data units, red when its rule is enabled, gray and dashed otherwise. An
    // overlay of the same id is replaced.
    void addPolygonOverlay(int id, const QPolygonF& polygon, bool ruleEnabled);
    void clearPolygonOverlays();

    // Polygon gates made with the mouse. Drawing places a vertex at each left click and closes the
    // polygon with a double click once it has three; editing drags vertices, inserts one where an
    // edge is pressed and deletes one with a right click. Drawing and editing exclude each other.
    // Ids are those of the overlays: a rule index, or a group-coded id.
    void startPolygonDraw();
    void cancelPolygonDraw();
    void startPolygonEdit(int id, const QPolygonF& polygon);
    void stopPolygonEdit();
    bool isDrawing() const { return drawing; }
    bool isEditing() const { return editing; }
    // The id under edit, -1 when none.
    int editId() const { return editedId; }
    // Vertices in data units: those placed so far, and those of the polygon under edit (not closed).
    const QPolygonF& drawnVertices() const { return drawVertices; }
    const QPolygonF& editedVertices() const { return editVertices; }
    // The vertex held by the mouse button, -1 when none.
    int draggedVertex() const { return dragVertex; }
    const QwtPlotCurve* drawingCurve() const { return drawCurve; }
    const QwtPlotCurve* editingCurve() const { return editCurve; }

    // The plot index of the point nearest to a position in data units, measured in fractions of
    // the canvas per direction, if it lies within 5 % of the canvas; -1 otherwise.
    int findNearestPoint(const QPointF& dataPos) const;

    // The look for printing: white backgrounds, no canvas frame, canvas aligned to the scales with
    // no margins, hidden top and right axes shown as bare lines so that the frame is closed.
    ScatterPlotExportState prepareForExport();
    void restoreAfterExport(const ScatterPlotExportState& state);

    // The data last set (index = plot index) and the items, for reading.
    const std::vector<double>& xValues() const { return xData; }
    const std::vector<double>& yValues() const { return yData; }
    const std::vector<double>& colorValues() const { return colorData; }
    const QwtPlotCurve* plainPoints() const { return plainCurve; }
    const RoundSpectroCurve* colorPoints() const { return colorCurve; }
    const QwtPlotCurve* highlight() const { return highlightCurve; }
    const std::vector<QwtPlotCurve*>& contours() const { return contourCurves; }
    const std::vector<QwtPlotCurve*>& isoelasticLines() const { return isoLines; }
    const std::vector<QwtPlotMarker*>& isoelasticLabels() const { return isoLabels; }
    const std::map<int, QwtPlotShapeItem*>& polygonOverlays() const { return overlays; }

    bool eventFilter(QObject* object, QEvent* event) override;

public slots:
    void replot() override;

signals:
    void pointClicked(int index);
    void pointHovered(int index);
    void polygonCompleted(QPolygonF polygon);
    void polygonDrawingStopped();
    void polygonEdited(int id, QPolygonF polygon);
    void polygonEditingStopped(int id);

private slots:
    void onPointSelected(int index);

private:
    void setupPlot();
    // Colours of matching length are set.
    bool hasColors() const;
    void applyColorMap();
    void showColorBar();
    void hideColorBar();
    bool removeContourCurves();
    bool removeIsoelastics();
    // Replots once the event loop runs again, unless a replot happens before; for changes that
    // callers make in batches.
    void scheduleReplot();
    QPointF toData(const QPoint& canvasPos) const;
    // Hands the drawable span of the data to the auto scale.
    void updateDataBounds();

    // The canvas's mouse and keys, one handler per kind of event; each says whether it consumed
    // the event. Only eventFilter calls them.
    bool handleKeyPress(const QKeyEvent* event);
    bool handlePress(const QMouseEvent* event);
    bool handleDoubleClick(const QMouseEvent* event);
    bool handleMove(const QMouseEvent* event);
    bool handleRelease(const QMouseEvent* event);
    bool handleWheel(const QWheelEvent* event);
    bool pressWhileEditing(const QMouseEvent* event);
    void hover(const QPoint& canvasPos);
    void updateEditCursor(const QPoint& canvasPos);
    QPolygonF toPixels(const QPolygonF& vertices) const;
    void clearDrawing();
    void updateDrawCurve();
    void updateEditCurve();
    void beginVertexDrag(int vertex);
    void panBy(const QPoint& delta);
    void zoomToRect(const QRect& band);
    void zoomAxisAbout(int axis, double centre, double factor);
    void setAxisRange(int axis, double lower, double upper);

    QwtPlotCurve* plainCurve = nullptr;
    RoundSpectroCurve* colorCurve = nullptr;
    QwtPlotCurve* highlightCurve = nullptr;
    ScatterPlotPicker* picker = nullptr;
    QwtPlotPanner* panner = nullptr;

    bool zooming = false;
    QPoint zoomOrigin;
    QRubberBand* rubberBand = nullptr;
    bool panning = false;
    QPoint panLast;

    std::vector<double> xData;
    std::vector<double> yData;
    std::vector<double> colorData;

    bool drawing = false;
    QPolygonF drawVertices;
    QwtPlotCurve* drawCurve = nullptr;

    bool editing = false;
    int editedId = -1;
    QPolygonF editVertices;
    int dragVertex = -1;
    LiftableCurve* editCurve = nullptr;
    // Carries the edit curve while a polygon is edited, so that the points below are not redrawn
    // at every move of a vertex.
    CurveOverlay* dragOverlay = nullptr;

    int hoverIndex = -1;
    std::map<int, QwtPlotShapeItem*> overlays;
    std::vector<QwtPlotCurve*> contourCurves;
    std::vector<QwtPlotCurve*> isoLines;
    std::vector<QwtPlotMarker*> isoLabels;
    bool dataHidden = false;
    int colorMapIndex = 0;

    bool replotScheduled = false;

    // The auto scale's view of the data, and the scale mode of each axis (by QwtPlot axis id).
    DataBoundsItem* dataBounds = nullptr;
    std::array<int, QwtPlot::axisCnt> scaleModes {};
};

} // namespace Tessaly
