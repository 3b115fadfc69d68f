<?xml version="1.0" encoding="UTF-8"?>
<!-- A table of the schema in Markdown: the parameters of a group, the attributes of a type or of an
     element without a named type, or the forms of parameters. -->
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform"
                xmlns:xs="http://www.w3.org/2001/XMLSchema">
    <xsl:output method="text" encoding="UTF-8"/>
    <xsl:param name="table"/>

    <xsl:template match="/xs:schema">
        <xsl:variable name="group" select="xs:group[@name = $table]"/>
        <xsl:variable name="attributes"
                      select="//xs:complexType[(@name | ../@name) = $table]/xs:attribute"/>
        <xsl:variable name="parameters"
                      select="xs:group[contains(@name, 'Parameters')]/*/xs:element"/>
        <xsl:choose>
            <xsl:when test="$group">
                <xsl:text>| element | form | notes | sent as |&#10;</xsl:text>
                <xsl:text>|---|---|---|---|&#10;</xsl:text>
                <xsl:apply-templates select="$group/*/xs:element"/>
            </xsl:when>
            <xsl:when test="$attributes">
                <xsl:text>| attribute | text | meaning |&#10;</xsl:text>
                <xsl:text>|---|---|---|&#10;</xsl:text>
                <xsl:apply-templates select="$attributes"/>
            </xsl:when>
            <xsl:when test="$table = 'forms'">
                <xsl:text>| form | attributes | meaning |&#10;</xsl:text>
                <xsl:text>|---|---|---|&#10;</xsl:text>
                <xsl:apply-templates select="xs:complexType[@name = $parameters/@type]"/>
            </xsl:when>
            <xsl:otherwise>
                <xsl:message terminate="yes">
                    <xsl:value-of select="concat('no table ', $table)"/>
                </xsl:message>
            </xsl:otherwise>
        </xsl:choose>
    </xsl:template>

    <xsl:template match="xs:element">
        <xsl:variable name="notes" select="xs:annotation/xs:documentation"/>
        <xsl:value-of select="concat('| `', @name, '` | `', @type, '`')"/>
        <xsl:value-of select="concat(' | ', normalize-space($notes[not(@source)]), ' | ')"/>
        <xsl:value-of select="substring-after($notes[@source = 'effect'], 'Effect: ')"/>
        <xsl:text> |&#10;</xsl:text>
    </xsl:template>

    <xsl:template match="xs:complexType">
        <xsl:value-of select="concat('| `', @name, '` | ')"/>
        <xsl:apply-templates select="xs:sequence/xs:element" mode="path"/>
        <xsl:for-each select=".//xs:attribute">
            <xsl:if test="position() > 1">, </xsl:if>
            <xsl:value-of select="concat('`', @name, '`')"/>
            <xsl:if test="count(../xs:attribute) = 1">
                <xsl:text>: </xsl:text>
                <xsl:apply-templates select="@type"/>
            </xsl:if>
        </xsl:for-each>
        <xsl:value-of select="concat(' | ', normalize-space(xs:annotation/xs:documentation))"/>
        <xsl:text> |&#10;</xsl:text>
    </xsl:template>

    <!-- The elements inside a form, outermost first. -->
    <xsl:template match="xs:element" mode="path">
        <xsl:value-of select="concat('in `', @name, '`: ')"/>
        <xsl:apply-templates select="xs:complexType/xs:sequence/xs:element" mode="path"/>
        <xsl:if test="@type">`value` as in `<xsl:value-of select="@type"/>`</xsl:if>
    </xsl:template>

    <xsl:template match="xs:attribute">
        <xsl:value-of select="concat('| `', @name, '`')"/>
        <xsl:if test="@use = 'required'"> (required)</xsl:if>
        <xsl:text> | </xsl:text>
        <xsl:apply-templates select="@type | xs:simpleType"/>
        <xsl:if test="@fixed">`<xsl:value-of select="@fixed"/>`</xsl:if>
        <xsl:text> | </xsl:text>
        <xsl:value-of select="normalize-space(xs:annotation/xs:documentation)"/>
        <xsl:text> |&#10;</xsl:text>
    </xsl:template>

    <xsl:template match="xs:attribute/@type">
        <xsl:choose>
            <xsl:when test=". = 'xs:string' and ../@fixed"/>
            <xsl:when test=". = 'xs:string'">text</xsl:when>
            <xsl:otherwise>
                <xsl:apply-templates select="/xs:schema/xs:simpleType[@name = current()]"/>
            </xsl:otherwise>
        </xsl:choose>
    </xsl:template>

    <xsl:template match="xs:simpleType">
        <xsl:choose>
            <xsl:when test="xs:union">number or name</xsl:when>
            <xsl:when test="@name = 'numberText'">number</xsl:when>
            <xsl:when test="xs:restriction/xs:enumeration">
                <xsl:for-each select="xs:restriction/xs:enumeration">
                    <xsl:if test="position() > 1">, </xsl:if>
                    <xsl:value-of select="concat('`', @value, '`')"/>
                </xsl:for-each>
            </xsl:when>
            <xsl:otherwise>text</xsl:otherwise>
        </xsl:choose>
    </xsl:template>
</xsl:stylesheet>
