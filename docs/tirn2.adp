<!DOCTYPE DCF>
<assistantconfig version="3.2.0">
<profile>
    <property name="name">Tirn2</property>
    <property name="title">Tirn Help</property>
    <property name="aboutmenutext">About Tirn</property>
    <property name="startpage">index.html</property>
    <property name="assistantdocs">.</property>
</profile>
<DCF ref="index.html" icon="" title="Tirn">
    <section ref="index.html#open" title="Opening files">
        <keyword ref="index.html#open">open</keyword>
        <keyword ref="index.html#open">command line</keyword>
    </section>
    <section ref="stacks.html" title="Stacks">
        <keyword ref="stacks.html#drop">drop</keyword>
        <keyword ref="stacks.html#form">time series</keyword>
        <keyword ref="stacks.html#raw">raw data</keyword>
        <keyword ref="stacks.html#sequence">TIFF sequence</keyword>
        <keyword ref="stacks.html#manager">stack manager</keyword>
        <keyword ref="stacks.html#filters">filter</keyword>
        <keyword ref="stacks.html#export">export</keyword>
        <keyword ref="stacks.html#preferences">preferences</keyword>
    </section>
    <section ref="help.html" title="Looking around">
        <keyword ref="help.html#mouse">mouse</keyword>
        <keyword ref="help.html#keys">keys</keyword>
        <keyword ref="help.html#blending">alpha blend</keyword>
        <keyword ref="help.html#blending">maximum intensity</keyword>
        <keyword ref="help.html#menus">menus</keyword>
        <keyword ref="help.html#stretch">stretch to used bits</keyword>
    </section>
    <section ref="palette.html" title="Palettes">
        <keyword ref="palette.html">palette</keyword>
        <keyword ref="palette.html#formats">palette files</keyword>
        <keyword ref="palette.html#map">map</keyword>
        <keyword ref="palette.html#col">Amira colormap</keyword>
        <keyword ref="palette.html#andor">Andor iQ</keyword>
        <keyword ref="palette.html#metamorph">MetaMorph</keyword>
    </section>
    <section ref="index.html#trouble" title="When something looks wrong"/>
</DCF>
</assistantconfig>
