#pragma once

#include <QWidget>

#include "gl/gltable.h"

class QCheckBox;
class QGroupBox;
class QLabel;
class QRadioButton;
class QSpinBox;

namespace tirn {

class FloatSpinBox;

/// The details of a load: which layers and time points, which textures, how large a voxel is.
class StackOpenExtension : public QWidget
{
    Q_OBJECT

public:
    StackOpenExtension(bool hasTexture3D, QWidget* parent);

    /// Layers, inclusive.
    int first() const;
    int last() const;
    int step() const;
    int timeStep() const;
    int subsample() const;
    /// Whether the voxels go to 3D texture maps, as GL_TEXTURE_3D says.
    bool use3Dtex() const;
    GLenum textureTarget() const;
    /// Whether 2D texture maps in three orientations are chosen, which is not the same as the target.
    bool uses2DMaps() const;
    bool resliceZ() const;
    int zSlices() const;
    bool conserve() const;
    /// Microns, 0 for unknown.
    double xDim() const;
    double yDim() const;
    double zDim() const;

    bool showsTimeStep() const;

    /// All as it is for a stack that nothing is known of.
    void reset();
    /// Chooses 3D texture maps, where the card has them, or 2D ones.
    void choose3D(bool on);

public Q_SLOTS:
    /// Reslicing can be had with 3D texture maps only.
    void toggleMaps();
    void showTimeStep(bool show);
    /// Chooses all slices of as many.
    void setRanges(int slices, int timePoints);
    void setTimePoints(int timePoints);
    /// Microns; what is not above 0 is unknown.
    void setDim(double x, double y, double z);

Q_SIGNALS:
    /// Something changed that the memory needed depends on.
    void calculateMemory();
    void dimensionsChanged(double x, double y, double z);

private:
    QSpinBox* spinBox(const char* name, int minimum, int maximum);
    FloatSpinBox* voxelBox(const char* name);
    QRadioButton* radioButton(const char* name, const QString& text);
    QGroupBox* layerGroup();
    QGroupBox* textureGroup(bool hasTexture3D);
    QGroupBox* voxelGroup();

    QSpinBox* m_first;
    QSpinBox* m_last;
    QSpinBox* m_step;
    QSpinBox* m_timeStep;
    QLabel* m_timeStepLabel;
    QSpinBox* m_subsample;
    QRadioButton* m_2D;
    QRadioButton* m_3D;
    QRadioButton* m_3DParallel;
    QCheckBox* m_resliceZ;
    QSpinBox* m_zSlices;
    QLabel* m_resliceLabel;
    QCheckBox* m_conserve;
    FloatSpinBox* m_xDim;
    FloatSpinBox* m_yDim;
    FloatSpinBox* m_zDim;
};

} // namespace tirn
