<?xml version="1.0"?>
<!-- Makes of native MKA policies the OpenConfig tree that `ocmap reverse` makes. -->
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform"
                xmlns:mka="http://tarvex.example/ns/yang/Tarvex-crypto-macsec-mka-cfg"
                xmlns="http://openconfig.net/yang/macsec"
                exclude-result-prefixes="mka">
  <xsl:output method="xml" omit-xml-declaration="yes"/>

  <xsl:template match="/">
    <data xmlns="urn:ietf:params:xml:ns:netconf:base:1.0">
      <macsec xmlns="http://openconfig.net/yang/macsec">
        <mka>
          <policies>
            <xsl:apply-templates select="mka:macsec/mka:policy-names/mka:policy-name"/>
          </policies>
        </mka>
      </macsec>
    </data>
  </xsl:template>

  <xsl:template match="mka:policy-name">
    <policy>
      <name><xsl:value-of select="mka:name"/></name>
      <config>
        <xsl:apply-templates select="*"/>
      </config>
    </policy>
  </xsl:template>

  <xsl:template match="mka:name">
    <name><xsl:value-of select="."/></name>
  </xsl:template>

  <xsl:template match="mka:created"/>

  <xsl:template match="mka:key-server-priority">
    <key-server-priority><xsl:value-of select="."/></key-server-priority>
  </xsl:template>

  <xsl:template match="mka:cipher-suite">
    <macsec-cipher-suite>
      <xsl:choose>
        <xsl:when test=". = 'gcm-aes-128'">GCM_AES_128</xsl:when>
        <xsl:when test=". = 'gcm-aes-256'">GCM_AES_256</xsl:when>
        <xsl:when test=". = 'gcm-aes-xpn-128'">GCM_AES_XPN_128</xsl:when>
        <xsl:when test=". = 'gcm-aes-xpn-256'">GCM_AES_XPN_256</xsl:when>
        <xsl:otherwise><xsl:value-of select="."/></xsl:otherwise>
      </xsl:choose>
    </macsec-cipher-suite>
  </xsl:template>

  <xsl:template match="mka:conf-offset">
    <confidentiality-offset>
      <xsl:choose>
        <xsl:when test=". = 'conf-off-set-0'">0_BYTES</xsl:when>
        <xsl:when test=". = 'conf-off-set-30'">30_BYTES</xsl:when>
        <xsl:when test=". = 'conf-off-set-50'">50_BYTES</xsl:when>
        <xsl:otherwise><xsl:value-of select="."/></xsl:otherwise>
      </xsl:choose>
    </confidentiality-offset>
  </xsl:template>

  <xsl:template match="mka:delay-protection">
    <delay-protection>true</delay-protection>
  </xsl:template>

  <xsl:template match="mka:include-icv-indicator">
    <include-icv-indicator>true</include-icv-indicator>
  </xsl:template>

  <xsl:template match="mka:sak-rekey-interval-sec">
    <sak-rekey-interval><xsl:value-of select="."/></sak-rekey-interval>
  </xsl:template>
</xsl:stylesheet>
